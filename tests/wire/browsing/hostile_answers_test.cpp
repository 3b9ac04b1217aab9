#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

// Whatever a server answers, a listing ends, delivers no half entry and leaves nothing behind.
class HostileAnswers : public BrowsingTest {
 protected:
  bool List(const std::string& path) { return server->ReadDirExt(path.c_str(), Collect(), Bits(15)); }

  // Lists a folder of a version 5 server whose three answers are given.
  bool ListFolder(const std::string& expanded, const std::string& folders, const std::string& documents) {
    SetUpServer();
    entries.clear();
    ScriptServices(Generation::Schema5);
    transport.Then(200, expanded).Then(200, folders).Then(200, documents);
    return List("Products/Gadget/Folders/");
  }
};

constexpr const char* expanded = R"({"value":[{"ID":"C100","Folders":[{"ID":"F1","Name":"Default"}]}]})";
constexpr const char* folders = R"({"value":[{"Name":"Sub"}]})";
constexpr const char* documents =
    R"({"value":[{"CADName":"a","ID":"1","Versions":[{"Version":"A.1","ID":"V"}]}],"@odata.nextLink":""})";

TEST_F(HostileAnswers, AFolderListTruncatedAtEachByteFails) {
  const std::string whole = folders;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SetUpServer();
    entries.clear();
    ScriptServices(Generation::Schema5);
    transport.Then(200, expanded).Then(200, whole.substr(0, length));
    EXPECT_FALSE(List("Products/Gadget/Folders/")) << length;
    EXPECT_THAT(entries, IsEmpty()) << length;
  }
}

TEST_F(HostileAnswers, ADocumentListTruncatedAtEachByteFailsBehindTheFolders) {
  const std::string whole = documents;
  const std::size_t endOfRow = whole.find("]}]") + 2;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(ListFolder(expanded, folders, whole.substr(0, length))) << length;
    EXPECT_EQ(entries.size(), length < endOfRow ? 1U : 2U) << length;
  }
  EXPECT_TRUE(ListFolder(expanded, folders, whole));
  EXPECT_THAT(entries, ElementsAre("dir Sub id=", "file a id=1 (,) versions=A.1:V"));
}

TEST_F(HostileAnswers, AnExpandedTreeTruncatedAtEachByteFallsBackToTheGateway) {
  const std::string whole = expanded;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SetUpServer();
    entries.clear();
    ScriptServices(Generation::Schema5);
    transport.Then(200, whole.substr(0, length)).Then(200, R"({"items":[]})");
    EXPECT_FALSE(List("Products/Gadget/Folders/")) << length;
  }
}

TEST_F(HostileAnswers, AnyTypeInAnyMemberIsPassedOver) {
  for (const char* value :
       {"null", "true", "7", "-1.5e3", "\"\"", "[]", "{}", "[[]]", R"([{}])", R"([null])"}) {
    const std::string page = std::string(R"({"value":)") + value + R"(,"@odata.nextLink":[]})";
    EXPECT_TRUE(ListFolder(expanded, page, page)) << value;
    EXPECT_THAT(entries, IsEmpty()) << value;
  }
}

TEST_F(HostileAnswers, ARootOfAnyTypeEndsTheFolders) {
  for (const char* root : {"null", "true", "7", "\"x\"", "[]", R"([{"value":[]}])"}) {
    EXPECT_TRUE(ListFolder(expanded, root, root)) << root;
    EXPECT_THAT(entries, IsEmpty()) << root;
  }
}

TEST_F(HostileAnswers, DeepNestingFailsAndDoesNotExhaustTheStack) {
  const std::string deep = std::string(1'000'000, '[');
  const std::string deepObject = [] {
    std::string text;
    for (int level = 0; level < 100'000; ++level) text += R"({"value":)";
    return text;
  }();
  for (const std::string& answer : {deep, deepObject}) {
    EXPECT_FALSE(ListFolder(expanded, folders, answer));
    EXPECT_THAT(entries, ElementsAre("dir Sub id="));
  }
}

TEST_F(HostileAnswers, NamesWithSlashesControlBytesAndZeroBytesPassAsTheyAre) {
  EXPECT_TRUE(ListFolder(expanded, R"({"value":[{"Name":"a/b\u0001"},{"Name":"c\u0000d"},{"Name":""}]})",
                         R"({"value":[{"CADName":"e/f\u0001","ID":"1"},{"CADName":"..","ID":"2"}]})"));
  EXPECT_THAT(entries, ElementsAre("dir a/b\x01 id=", "dir c id=", "dir  id=",
                                   "file e%2ff\x01 id=1 (,) versions=", "file .. id=2 (,) versions="));
}

TEST_F(HostileAnswers, ContextsOfAnyShapeListWhatCanBeRead) {
  for (const char* answer : {"", "{", "7", "{}", R"({"items":7})", R"([])", R"({"items":[]})"}) {
    SetUpServer();
    entries.clear();
    ScriptServices(Generation::Rest);
    transport.Then(200, answer);
    EXPECT_TRUE(List("Products/")) << answer;
    EXPECT_THAT(entries, IsEmpty()) << answer;
  }
}

TEST_F(HostileAnswers, AConnectionThatBreaksEndsEveryListing) {
  for (const char* path : {"Products/", "Products/Gadget/Folders/", "Products/Gadget/Workspaces/"}) {
    SetUpServer();
    transport.ThenFail(du::http::ErrorCode::NoConnection).ThenFail(du::http::ErrorCode::ProtocolFailure);
    EXPECT_FALSE(List(path)) << path;
  }
}

}  // namespace
}  // namespace vtdirect_test
