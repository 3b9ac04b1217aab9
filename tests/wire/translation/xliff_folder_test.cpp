#include "translation/xliff_folder.h"

#include <stdlib.h>

#include "tests/wire/translation/xliff_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

// A folder; `more` are further members, which are JSON already.
std::string Folder(const std::string& id, const std::string& name, const std::string& location,
                   const std::string& more = {}) {
  return R"({"ID":")" + id + R"(","Name":")" + name + R"(","Location":")" + location + "\"" +
         (more.empty() ? "" : "," + more) + "}";
}

std::string With(const std::vector<std::string>& folders) {
  std::string text;
  for (const auto& folder : folders) text += (text.empty() ? "" : ",") + folder;
  return "\"Folders\":[" + text + "]";
}

// The id of the folder "Sub" in "/Trans".
std::string FindIn(const std::string& json) {
  rapidjson::Document document;
  document.Parse(json.c_str());
  EXPECT_FALSE(document.HasParseError()) << json;
  return FindFolderInTree(document, "Sub", "/Trans");
}

const std::string sought = Folder("F9", "Sub", "/Trans");

TEST(FolderInTree, IsTheElementOfThatNameAndLocation) {
  EXPECT_EQ(FindIn("[" + sought + "]"), "F9");
  EXPECT_EQ(FindIn("[" + Folder("F1", "Sub", "/Other") + "," + Folder("F2", "Other", "/Trans") + "," +
                   sought + "," + Folder("F3", "Sub", "/Trans") + "]"),
            "F9");
}

TEST(FolderInTree, IsComparedByteForByte) {
  for (const char* location : {"/trans", "/Trans/", "Trans", "/Trans ", ""}) {
    EXPECT_EQ(FindIn("[" + Folder("F1", "Sub", location) + "]"), "") << location;
  }
  for (const char* name : {"sub", "Sub/", "Su", ""}) {
    EXPECT_EQ(FindIn("[" + Folder("F1", name, "/Trans") + "]"), "") << name;
  }
}

TEST(FolderInTree, IsFoundAtAnyDepth) {
  EXPECT_EQ(FindIn("[" +
                   Folder("F1", "Default", "/",
                          With({Folder("F2", "A", "/"), Folder("F3", "Trans", "/", With({sought}))})) +
                   "]"),
            "F9");
}

TEST(FolderInTree, CountsBeforeItsOwnFolders) {
  EXPECT_EQ(FindIn("[" + Folder("F1", "Sub", "/Trans", With({sought})) + "]"), "F1");
}

// The limit of the walk: the first element with folders ends it, whether or not it led to something.
TEST(FolderInTree, IsNotLookedForBehindTheFirstElementWithFolders) {
  EXPECT_EQ(FindIn("[" + Folder("F1", "A", "/", With({})) + "," + sought + "]"), "");
  EXPECT_EQ(FindIn("[" + Folder("F1", "A", "/", With({Folder("F2", "B", "/A")})) + "," +
                   Folder("F3", "Trans", "/", With({sought})) + "]"),
            "");
  EXPECT_EQ(FindIn("[" + Folder("F1", "A", "/") + "," + Folder("F2", "B", "/", With({sought})) + "]"), "F9");
  EXPECT_EQ(FindIn("[" + sought + "," + Folder("F1", "A", "/", With({})) + "]"), "F9");
}

TEST(FolderInTree, IsNotLookedForBehindTheFirstElementWithFoldersAtAnyLevel) {
  EXPECT_EQ(FindIn("[" +
                   Folder("F1", "Default", "/",
                          With({Folder("F2", "A", "/", With({Folder("F3", "B", "/A")})), sought})) +
                   "]"),
            "");
}

// The member counts by being there, whatever it is.
TEST(FolderInTree, IsNotLookedForBehindFoldersThatAreNoList) {
  for (const char* folders : {R"("Folders":null)", R"("Folders":7)", R"("Folders":"x")", R"("Folders":{})"}) {
    EXPECT_EQ(FindIn("[" + Folder("F1", "A", "/", folders) + "," + sought + "]"), "") << folders;
  }
}

TEST(FolderInTree, NeedsThreeTexts) {
  EXPECT_EQ(FindIn(R"([{"Name":"Sub","Location":"/Trans"},{"ID":7,"Name":"Sub","Location":"/Trans"},
                       {"ID":"F1","Name":["Sub"],"Location":"/Trans"},{"ID":"F2","Name":"Sub","Location":null},
                       {"ID":"F3","Name":"Sub"},{"ID":"F4","Location":"/Trans"}])"),
            "");
  // What lacks its id is no hit, and its folders are looked at.
  EXPECT_EQ(FindIn(R"([{"ID":7,"Name":"Sub","Location":"/Trans",)" + With({sought}) + "}]"), "F9");
}

TEST(FolderInTree, PassesOverWhatIsNoObject) {
  EXPECT_EQ(FindIn("[7,null,\"Folders\",[" + sought + "],{}," + sought + "]"), "F9");
}

TEST(FolderInTree, IsNoneInWhatIsNoList) {
  for (const std::string& json : {std::string("{}"), std::string("7"), std::string("null"), sought}) {
    EXPECT_EQ(FindIn(json), "") << json;
  }
  EXPECT_EQ(FindIn("[]"), "");
}

class FolderByPath : public XliffTest {
 protected:
  std::string Find(const char* path) {
    return FindFolderByPath(Begin(connection), "Gadget", "Product", path);
  }
  // The line that a search for this path sends.
  std::string LineOf(const char* path) {
    transport.ClearRequests();
    transport.Then(200, Rows({}));
    EXPECT_EQ(Find(path), "") << path;
    return transport.lines().at(0);
  }
  // The container with the folder, as the server expands it.
  const std::string container =
      "{\"ID\":\"C5\",\"Name\":\"Gadget\"," + With({Folder("F1", "Default", "/", With({sought}))}) + "}";
};

TEST_F(FolderByPath, IsFoundByOneODataRead) {
  transport.Then(200, Rows({container}));
  EXPECT_EQ(Find("/Trans/Sub"), "F9");
  EXPECT_EQ(transport.requests(),
            (Requests{{serverUrl,
                       "GET /vt/servlet/odata/v1/DataAdmin/"
                       "Containers?$expand=Folders($select=ID,Name,Location;$levels=2)&$select=Name,ID"
                       "&$filter=Name%20eq%20%27Gadget%27",
                       readHeaders,
                       {}}}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

// With the scan that ends: one level for each slash, and one more for a path that begins without one.
TEST_F(FolderByPath, AsksForAsManyLevelsAsThePathHas) {
  EXPECT_EQ(LineOf("/A/B"), Get(FolderPath(2)));
  EXPECT_EQ(LineOf("A/B"), Get(FolderPath(2)));
  EXPECT_EQ(LineOf("/A/B/C"), Get(FolderPath(3)));
  EXPECT_EQ(LineOf("A/B/C"), Get(FolderPath(3)));
  EXPECT_EQ(LineOf("A/"), Get(FolderPath(2)));
  EXPECT_EQ(LineOf("//"), Get(FolderPath(2)));
  EXPECT_EQ(LineOf("/A//B"), Get(FolderPath(3)));
}

TEST_F(FolderByPath, EndsItsScanByAnyTextOfTheSwitch) {
  setenv("FENLOOM_XLIFF_BOUNDED_FOLDER_SCAN", "0", 1);
  EXPECT_EQ(LineOf("/A/B"), Get(FolderPath(2)));
}

TEST_F(FolderByPath, IsNoneWithoutARequestForAPathWithoutAnInnerSlash) {
  for (const char* path : {"", "/", "A", "/A", "/ABC"}) EXPECT_EQ(Find(path), "") << path;
  EXPECT_THAT(transport.lines(), IsEmpty());
}

TEST_F(FolderByPath, EscapesTheWholeFilter) {
  transport.Then(200, Rows({})).Then(200, Rows({}));
  EXPECT_EQ(FindFolderByPath(Begin(connection), "O'Neill & Sons", "Product", "/A/B"), "");
  EXPECT_EQ(FindFolderByPath(Begin(connection), "", "", "/A/B"), "");
  const std::string stem = FolderPath(2).substr(0, FolderPath(2).find("Name%20eq"));
  EXPECT_EQ(transport.lines(), (Lines{Get(stem + "Name%20eq%20%27O%27Neill%20%26%20Sons%27"),
                                      Get(stem + "Name%20eq%20%27%27")}));
}

TEST_F(FolderByPath, CutsNameAndLocationAtTheLastSlash) {
  const std::string tree = Rows({"{" +
                                 With({Folder("F1", "B", "A"), Folder("F2", "B", "/A"),
                                       Folder("F3", "C", "/A/B"), Folder("F4", "", "A")}) +
                                 "}"});
  for (const auto& [path, id] : std::vector<std::pair<const char*, const char*>>{
           {"A/B", "F1"}, {"/A/B", "F2"}, {"/A/B/C", "F3"}, {"A/", "F4"}, {"A/B/C", ""}}) {
    transport.Then(200, tree);
    EXPECT_EQ(Find(path), id) << path;
  }
}

TEST_F(FolderByPath, IsLookedForOnlyWhereAContainerHasFolders) {
  // The containers themselves are compared too, once one of them is expanded.
  const std::string alike = Folder("C1", "Sub", "/Trans");
  transport.Then(200, Rows({alike, "7", "{}"}));
  EXPECT_EQ(Find("/Trans/Sub"), "");
  transport.Then(200, Rows({alike, container}));
  EXPECT_EQ(Find("/Trans/Sub"), "C1");
}

TEST_F(FolderByPath, IsNotLookedForBehindTheFirstContainerWithFolders) {
  transport.Then(200, Rows({R"({"ID":"C4","Folders":[]})", container}));
  EXPECT_EQ(Find("/Trans/Sub"), "");
}

TEST_F(FolderByPath, IsTheFirstOfAllPages) {
  transport.Then(200, Rows({R"({"ID":"C4","Folders":[]})"}, "https://plm.example/vt/2?a=1"))
      .Then(200, R"({"value":{},"@odata.nextLink":"https://other.example/3"})")
      .Then(200, Rows({container}, "https://plm.example/vt/4"));
  EXPECT_EQ(Find("/Trans/Sub"), "F9");
  EXPECT_EQ(transport.requests(),
            (Requests{ReadPage(FolderPath(2)), ReadLink("https://plm.example", "/vt/2?a=1"),
                      ReadLink("https://other.example", "/3")}));
}

TEST_F(FolderByPath, IsNoneBehindAFailedPage) {
  const std::string first = Rows({R"({"ID":"C4","Folders":[]})"}, "https://plm.example/vt/2");
  const std::vector<Answer> failures{{500, Rows({container})},
                                     {0, "", du::http::ErrorCode::TimedOut},
                                     {200, "<html>"},
                                     {200, "[" + container + "]"},
                                     {204, ""}};
  for (const Answer& failure : failures) {
    transport.Then(200, first).Then(failure);
    EXPECT_EQ(Find("/Trans/Sub"), "");
    transport.Then(failure);
    EXPECT_EQ(Find("/Trans/Sub"), "");
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

// An empty id is no answer, so the next page is asked.
TEST_F(FolderByPath, IsNotAFolderWithAnEmptyId) {
  transport.Then(200, Rows({"{" + With({Folder("", "Sub", "/Trans")}) + "}"}, "https://plm.example/vt/2"))
      .Then(200, Rows({container}));
  EXPECT_EQ(Find("/Trans/Sub"), "F9");
}

}  // namespace
}  // namespace vtdirect_test
