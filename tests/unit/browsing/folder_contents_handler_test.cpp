#include "browsing/folder_contents_handler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "connection/json_parsing.h"

namespace lxservices::cms_interface::vantry {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Page {
  bool read = false;
  std::vector<std::string> rows;
  std::string nextLink;
};

std::string JoinArray(const char** texts) {
  if (texts == nullptr) return "-";
  std::string joined;
  for (const char** text = texts; *text != nullptr; ++text)
    joined.append(text == texts ? "" : ",").append(*text);
  return joined;
}

// One row in one text: "name id", then "(number,name)" with details, then "versions=ids" with versions.
std::string RowText(const DirEntryInfoExt& entry) {
  EXPECT_FALSE(entry.isDirectory);
  std::string text = std::string(entry.name) + " " + entry.id;
  if (entry.details != nullptr) {
    EXPECT_EQ(entry.details->reserved, nullptr);
    text.append(" (").append(entry.details->number).append(",").append(entry.details->name).append(")");
  }
  if (entry.versions != nullptr || entry.versionIds != nullptr) {
    text += " " + JoinArray(entry.versions) + "=" + JoinArray(entry.versionIds);
  }
  return text;
}

Page Read(const std::string& json, bool details = false, bool versions = false, bool fileNameKey = false) {
  Page page;
  FolderContentsHandler handler({details, versions, fileNameKey}, [&page](const DirEntryInfoExt& entry) {
    page.rows.push_back(RowText(entry));
  });
  page.read = ReadJson(json, handler);
  page.nextLink = handler.nextLink();
  return page;
}

std::vector<std::string> Rows(const std::string& rows, bool details = false, bool versions = false) {
  return Read(R"({"value":[)" + rows + "]}", details, versions).rows;
}

TEST(FolderContents, AnEmptyPageHasNoRows) {
  const Page page = Read(R"({"value":[]})");
  EXPECT_TRUE(page.read);
  EXPECT_THAT(page.rows, IsEmpty());
  EXPECT_EQ(page.nextLink, "");
}

TEST(FolderContents, ARowGivesItsNameAndId) {
  EXPECT_THAT(Rows(R"({"CADName":"a.lxz","ID":"D1"},{"ID":"D2","CADName":"b.lxz"})"),
              ElementsAre("a.lxz D1", "b.lxz D2"));
}

TEST(FolderContents, DetailsAreGivenOnlyWhenAskedFor) {
  const char* row = R"({"CADName":"a","ID":"D1","Version":"A.1","Name":"Gear","Number":"0042"})";
  EXPECT_THAT(Rows(row), ElementsAre("a D1"));
  EXPECT_THAT(Rows(row, true), ElementsAre("a D1 (0042,Gear)"));
  EXPECT_THAT(Rows(R"({"CADName":"a","ID":"D1"})", true), ElementsAre("a D1 (,)"));
}

TEST(FolderContents, TheNameStandsUnderTheKeyOfItsKindAlone) {
  const char* page = R"({"value":[{"CADName":"a","FileName":"b","ID":"D1"}]})";
  EXPECT_THAT(Read(page, false, false, false).rows, ElementsAre("a D1"));
  EXPECT_THAT(Read(page, false, false, true).rows, ElementsAre("b D1"));
}

TEST(FolderContents, ARowWithoutANameMakesNoEntry) {
  EXPECT_THAT(Rows(R"({"ID":"D1"},{"CADName":"","ID":"D2"},{},{"CADName":7,"ID":"D3"})"), IsEmpty());
}

TEST(FolderContents, NeighboursOfOneNameCountOnce) {
  EXPECT_THAT(Rows(R"({"CADName":"A","ID":"1"},{"CADName":"A","ID":"2"})"), ElementsAre("A 1"));
  EXPECT_THAT(Rows(R"({"CADName":"A","ID":"1"},{"CADName":"B","ID":"2"},{"CADName":"A","ID":"3"})"),
              ElementsAre("A 1", "B 2", "A 3"));
}

TEST(FolderContents, ARowWithoutANameParts) {
  EXPECT_THAT(Rows(R"({"CADName":"A","ID":"1"},{"ID":"2"},{"CADName":"A","ID":"3"})"),
              ElementsAre("A 1", "A 3"));
}

TEST(FolderContents, ANameWithAForbiddenCharacterIsNeverItsOwnNeighbour) {
  EXPECT_THAT(Rows(R"({"CADName":"a|b","ID":"1"},{"CADName":"a|b","ID":"2"})"),
              ElementsAre("a%7cb 1", "a%7cb 2"));
  // The raw name is compared with the escaped one of the row before.
  EXPECT_THAT(Rows(R"({"CADName":"a%b","ID":"1"},{"CADName":"a%25b","ID":"2"})"), ElementsAre("a%25b 1"));
}

TEST(FolderContents, VersionsComeInReverseWithoutNeighboursOfOneText) {
  const char* row =
      R"({"CADName":"a","ID":"D3","Versions":[{"Version":"A.1","ID":"D1"},{"Version":"A.2","ID":"D2"},
          {"ID":"D3","Version":"A.2"}]})";
  EXPECT_THAT(Rows(row, false, true), ElementsAre("a D3 A.2,A.1=D3,D1"));
  EXPECT_THAT(Rows(row, false, false), ElementsAre("a D3"));
}

TEST(FolderContents, VersionsMayStandBeforeTheNameOfTheRow) {
  EXPECT_THAT(Rows(R"({"Versions":[{"Version":"A.1","ID":"V1"}],"ID":"D1","CADName":"a"})", false, true),
              ElementsAre("a D1 A.1=V1"));
}

TEST(FolderContents, ARowWithoutVersionsGivesEmptyArrays) {
  EXPECT_THAT(Rows(R"({"CADName":"a","ID":"D1"},{"CADName":"b","ID":"D2","Versions":[]})", false, true),
              ElementsAre("a D1 =", "b D2 ="));
}

TEST(FolderContents, VersionsOfOneRowDoNotReachTheNext) {
  EXPECT_THAT(Rows(R"({"CADName":"a","ID":"D1","Versions":[{"Version":"A.1","ID":"V1"},{"Version":"A.2"}]},
                      {"CADName":"b","ID":"D2","Versions":[{"ID":"V9"},{"Version":"C.1"}]})",
                   false, true),
              ElementsAre("a D1 A.2,A.1=,V1", "b D2 C.1="));
}

TEST(FolderContents, AVersionWithoutATextIsLeftOut) {
  EXPECT_THAT(Rows(R"({"CADName":"a","ID":"D1","Versions":[{"ID":"V1"},{"Version":3,"ID":"V2"},
                      {"Version":"","ID":"V3"},{"Version":"B.1","ID":"V4"},7,"x",null,[]]})",
                   false, true),
              ElementsAre("a D1 B.1=V4"));
}

TEST(FolderContents, TheRowsOwnVersionIsNoneOfItsVersions) {
  EXPECT_THAT(Rows(R"({"CADName":"a","ID":"D1","Versions":[{"Version":"A.1","ID":"V1"}],"Version":"Z.9"})",
                   false, true),
              ElementsAre("a D1 A.1=V1"));
}

TEST(FolderContents, TheNextLinkIsReadAtTheRootAlone) {
  EXPECT_EQ(Read(R"({"@odata.nextLink":"http://h/p?2","value":[]})").nextLink, "http://h/p?2");
  EXPECT_EQ(Read(R"({"value":[{"CADName":"a","@odata.nextLink":"http://h/x"}]})").nextLink, "");
  EXPECT_EQ(Read(R"({"x":{"@odata.nextLink":"http://h/x"},"@odata.nextLink":null})").nextLink, "");
  EXPECT_EQ(Read(R"({"@odata.nextLink":7})").nextLink, "");
  EXPECT_EQ(Read(R"({"@odata.nextlink":"http://h/x"})").nextLink, "");
}

TEST(FolderContents, RowsStandInTheArrayValueOfTheRootAlone) {
  for (const char* page : {
           R"([{"CADName":"a","ID":"1"}])",
           R"({"CADName":"a","ID":"1"})",
           R"({"value":{"CADName":"a","ID":"1"}})",
           R"({"value":[[{"CADName":"a","ID":"1"}]]})",
           R"({"values":[{"CADName":"a","ID":"1"}]})",
           R"({"x":{"value":[{"CADName":"a","ID":"1"}]}})",
       }) {
    const Page read = Read(page);
    EXPECT_TRUE(read.read) << page;
    EXPECT_THAT(read.rows, IsEmpty()) << page;
  }
}

TEST(FolderContents, MembersWithinMembersOfARowAreNotTheRows) {
  EXPECT_THAT(Rows(R"({"ID":"D1","Folder":{"CADName":"x","ID":"F1","Name":"y"},"Tags":["q",["CADName"]],
                      "CADName":"a","Name":"n"})",
                   true),
              ElementsAre("a D1 (,n)"));
}

TEST(FolderContents, EveryMemberMayBeOfAnotherType) {
  for (const char* value : {"null", "true", "false", "7", "-1", "1.5", "18446744073709551615", "{}", "[]",
                            R"({"ID":"x"})", R"(["x"])", R"([{"ID":"x","Other":"y"}])"}) {
    for (const char* member : {"CADName", "ID", "Name", "Number", "Version", "Versions"}) {
      const std::string row = R"({"CADName":"a","ID":"D1","Name":"n","Number":"0","Version":"A.1"})";
      const std::string hostile = std::string("{\"") + member + "\":" + value + "}";
      EXPECT_THAT(Rows(hostile + "," + row, true, true), ElementsAre("a D1 (0,n) =")) << hostile;
    }
    const Page page = Read(std::string(R"({"value":)") + value + R"(,"@odata.nextLink":)" + value + "}");
    EXPECT_TRUE(page.read) << value;
    EXPECT_THAT(page.rows, IsEmpty()) << value;
  }
}

TEST(FolderContents, AMemberThatStandsTwiceTakesTheLaterText) {
  EXPECT_THAT(Rows(R"({"CADName":"a","ID":"1","CADName":"b","ID":"2","ID":null})"), ElementsAre("b 2"));
}

TEST(FolderContents, ANameMayHoldSlashesControlBytesAndAZeroByte) {
  EXPECT_THAT(Rows(R"({"CADName":"a/b\u0007","ID":"1"},{"CADName":"c\u0000d","ID":"2"})"),
              ElementsAre("a%2fb\a 1", "c 2"));
}

TEST(FolderContents, RowsBeforeABreakStayDelivered) {
  const Page page = Read(R"({"value":[{"CADName":"a","ID":"1"},{"CADName":"b","ID")");
  EXPECT_FALSE(page.read);
  EXPECT_THAT(page.rows, ElementsAre("a 1"));
}

TEST(FolderContents, EveryTruncationFailsAndDeliversWhatWasWhole) {
  const std::string whole =
      R"({"value":[{"CADName":"a|","ID":"1","Versions":[{"Version":"A.1","ID":"V"}]},{"CADName":"b","ID":"2"}],)"
      R"("@odata.nextLink":"http://h/p"})";
  const auto endOfFirst = whole.find("]}") + 2;
  const auto endOfSecond = whole.find(R"("2"})") + 4;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const Page page = Read(whole.substr(0, length), true, true);
    EXPECT_FALSE(page.read) << length;
    const std::size_t rows = (length >= endOfFirst ? 1U : 0U) + (length >= endOfSecond ? 1U : 0U);
    EXPECT_EQ(page.rows.size(), rows) << length;
  }
  EXPECT_TRUE(Read(whole, true, true).read);
}

TEST(FolderContents, TextBehindTheValueFailsAndWhiteSpaceDoesNot) {
  const std::string page = R"({"value":[{"CADName":"a","ID":"1"}]})";
  EXPECT_TRUE(Read(page + " \t\r\n").read);
  for (const std::string& rest : {std::string("x"), std::string(" {}"), std::string(","),
                                  std::string("\0", 1), std::string("\n\0x", 3)}) {
    const Page read = Read(page + rest);
    EXPECT_FALSE(read.read) << rest;
    EXPECT_THAT(read.rows, ElementsAre("a 1")) << rest;
  }
}

TEST(FolderContents, NestingBelowTheLimitFailsWithoutExhaustingTheStack) {
  const auto nested = [](std::size_t levels) {
    return R"({"value":[{"CADName":"a","ID":"1","x":)" + std::string(levels, '[') + std::string(levels, ']') +
           "}]}";
  };
  EXPECT_TRUE(Read(nested(maximumJsonDepth - 3)).read);
  EXPECT_FALSE(Read(nested(maximumJsonDepth - 2)).read);
  EXPECT_FALSE(Read(nested(1'000'000)).read);
}

// As long as a text may be, and longer: what was delivered before stays delivered.
TEST(FolderContents, ALongNameIsOneNameUpTo16MiB) {
  constexpr std::size_t longest = 16 * 1024 * 1024;
  const std::string begin = R"({"value":[{"CADName":"a","ID":"0"},{"ID":"1","CADName":")";
  const std::string end = R"("},{"CADName":"b","ID":"2"}]})";
  std::vector<std::size_t> lengths;
  FolderContentsHandler handler({}, [&lengths](const DirEntryInfoExt& entry) {
    lengths.push_back(std::string_view(entry.name).size());
  });
  EXPECT_TRUE(ReadJson(begin + std::string(longest, 'n') + end, handler));
  EXPECT_THAT(lengths, ElementsAre(1U, longest, 1U));
  lengths.clear();
  EXPECT_FALSE(ReadJson(begin + std::string(100'000'000, 'n') + end, handler));
  EXPECT_THAT(lengths, ElementsAre(1U));
}

}  // namespace
}  // namespace lxservices::cms_interface::vantry
