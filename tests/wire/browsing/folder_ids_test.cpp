#include "browsing/folder_ids.h"

#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;

class FolderIdByOData : public BrowsingTest {
 protected:
  static SentRequest Expand(const std::string& levels) {
    return OData("servlet/odata/v1/DataAdmin/Containers('C100')/Folders?$expand=Folders($levels=" + levels +
                 ";$select=ID,Name)&$select=ID,Name");
  }
};

constexpr const char* defaultRoot =
    R"({"ID":"F1","Name":"Default","Folders":[{"ID":"F2","Name":"Sub","Folders":[{"ID":"F3","Name":"Deep"}]}]})";
constexpr const char* otherRoot =
    R"({"ID":"R1","Name":"Other","Folders":[{"ID":"R2","Name":"Sub","Folders":[{"ID":"R3","Name":"Deep"}]}]})";
constexpr const char* thirdRoot = R"({"ID":"T1","Name":"Third","Folders":[{"ID":"T2","Name":"Sub"}]})";

std::string Page(const std::string& rows, const std::string& nextLink = {}) {
  return R"({"value":[)" + rows + "]" +
         (nextLink.empty() ? "" : R"(,"@odata.nextLink":")" + nextLink + "\"") + "}";
}

TEST_F(FolderIdByOData, IsFoundInOneRequestWithAsManyLevelsAsThePathHas) {
  transport.Then(200, Page(defaultRoot));
  EXPECT_EQ(FindFolderIdOData(Begin(connection), "C100", "Sub/Deep"), "F3");
  EXPECT_EQ(transport.requests(), Requests{Expand("2")});
}

TEST_F(FolderIdByOData, OfAnEmptyPathIsEmptyAndSendsNothing) {
  EXPECT_EQ(FindFolderIdOData(Begin(connection), "C100", ""), "");
  EXPECT_EQ(FindFolderIdOData(Begin(connection), "C100", "///"), "");
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(FolderIdByOData, IsTheFirstRootsUnlessTheDefaultRootHasOne) {
  transport.Then(200, Page(std::string(otherRoot) + "," + thirdRoot))
      .Then(200, Page(std::string(otherRoot) + "," + defaultRoot + "," + thirdRoot))
      .Then(200, Page(std::string(defaultRoot) + "," + otherRoot));
  EXPECT_EQ(FindFolderIdOData(Begin(connection), "C100", "Sub"), "R2");
  EXPECT_EQ(FindFolderIdOData(Begin(connection), "C100", "Sub"), "F2");
  EXPECT_EQ(FindFolderIdOData(Begin(connection), "C100", "Sub"), "F2");
}

TEST_F(FolderIdByOData, ADefaultRootWithoutTheFolderChangesNothing) {
  transport.Then(200, Page(std::string(R"({"ID":"F1","Name":"Default"},)") + otherRoot));
  EXPECT_EQ(FindFolderIdOData(Begin(connection), "C100", "Sub"), "R2");
}

TEST_F(FolderIdByOData, ADefaultRootEndsItsPageAndNotTheReading) {
  const std::string laterDefault = R"({"ID":"L1","Name":"Default","Folders":[{"ID":"L2","Name":"Sub"}]})";
  transport.Then(200, Page(std::string(defaultRoot) + "," + laterDefault, "https://plm.example/vt/p2"))
      .Then(200, Page(thirdRoot, "https://plm.example/vt/p3"))
      .Then(200, Page(laterDefault));
  EXPECT_EQ(FindFolderIdOData(Begin(connection), "C100", "Sub"), "L2");
  EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(FolderIdByOData, IsEmptyOnAFailureAndForRowsOfAnotherType) {
  transport.Then(500).Then(200, Page(R"(7,"x",[],{"Folders":7},{"Name":"Sub","ID":"x"})")).Then(200, "{");
  for (int answer = 0; answer < 3; ++answer)
    EXPECT_EQ(FindFolderIdOData(Begin(connection), "C100", "Sub"), "");
}

class FolderIdByRest : public BrowsingTest {
 protected:
  static SentRequest Roots() { return Rest("servlet/rest/v1/contexts/C%3A100/folders"); }
  static SentRequest Below(const std::string& id) {
    return Rest("servlet/rest/v1/folders/" + id + "/folders");
  }
  std::string Id(const std::string& folderPath) {
    return FindFolderIdRest(Begin(connection), "C:100", folderPath);
  }
};

std::string Items(std::initializer_list<std::pair<const char*, const char*>> folders) {
  std::string text = R"({"items":[)";
  for (const auto& [name, id] : folders) {
    if (text.back() != '[') text += ",";
    text += std::string(R"({"id":")") + id + R"(","attributes":{"name":")" + name + "\"}}";
  }
  return text + "]}";
}

TEST_F(FolderIdByRest, IsWalkedToOneRequestAComponent) {
  transport.Then(200, Items({{"Other", "F0"}, {"Sub", "F:1"}, {"Sub", "F9"}}))
      .Then(200, Items({{"Deep", "F2"}}));
  EXPECT_EQ(Id("Sub/Deep"), "F2");
  EXPECT_EQ(transport.requests(), (Requests{Roots(), Below("F%3A1")}));
}

TEST_F(FolderIdByRest, OfAnEmptyPathIsEmptyAndSendsNothing) {
  EXPECT_EQ(Id(""), "");
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(FolderIdByRest, IsTheDeepestThatMatchedWhenTheLastComponentIsWrong) {
  transport.Then(200, Items({{"Sub", "F1"}})).Then(200, Items({{"Else", "F2"}}));
  EXPECT_EQ(Id("Sub/Deep"), "F1");
}

TEST_F(FolderIdByRest, GoesOnFromTheDeepestWhenAMiddleComponentIsWrong) {
  transport.Then(200, Items({{"Sub", "F1"}}))
      .Then(200, Items({{"Deep", "F2"}}))
      .Then(200, Items({{"Deep", "F2"}}));
  EXPECT_EQ(Id("Sub/Wrong/Deep"), "F2");
  EXPECT_EQ(transport.requests(), (Requests{Roots(), Below("F1"), Below("F1")}));
}

TEST_F(FolderIdByRest, IsEmptyWhenTheFirstComponentIsWrong) {
  transport.Then(200, Items({{"Sub", "F1"}}));
  EXPECT_EQ(Id("Wrong/Sub"), "");
  EXPECT_EQ(transport.requests(), Requests{Roots()});
}

TEST_F(FolderIdByRest, IsEmptyWhenARequestFails) {
  transport.Then(500).Then(200, Items({{"Sub", "F1"}})).Then(404);
  EXPECT_EQ(Id("Sub/Deep"), "");
  EXPECT_EQ(Id("Sub/Deep"), "");
}

TEST_F(FolderIdByRest, ABrokenListLeavesTheFolderThatWasReached) {
  transport.Then(200, Items({{"Sub", "F1"}})).Then(200, "{");
  EXPECT_EQ(Id("Sub/Deep"), "F1");
}

TEST_F(FolderIdByRest, AClosingSlashIsNoFurtherComponent) {
  transport.Then(200, Items({{"Sub", "F1"}}));
  EXPECT_EQ(Id("Sub/"), "F1");
}

TEST_F(FolderIdByRest, AComponentWithoutATextMatchesNoRowWithoutAName) {
  transport.Then(200, Items({{"Sub", "F1"}}))
      .Then(200, R"({"items":[{"id":"X"}]})")
      .Then(200, Items({{"B", "F2"}}));
  EXPECT_EQ(Id("Sub//B"), "F2");
}

}  // namespace
}  // namespace vtdirect_test
