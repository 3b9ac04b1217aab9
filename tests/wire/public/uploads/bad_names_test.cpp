#include "tests/wire/public/uploads/upload_front_fixture.h"

// Names and addresses of an odd kind: what the host or the server chose goes out as it is.
namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::IsEmpty;

std::string ObjectsLine(const std::string& escapedName) {
  return Get("servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter=CADName eq '" +
             escapedName + "'");
}

class BadNames : public UploadFrontTest {
 protected:
  // Creates a document of this name, as it is in the path, at the top of the folders.
  bool Create(const std::string& leaf, const std::string& answeredName) {
    ThenNewName();
    transport.Then(200, R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})");
    ThenNonce();
    ThenUpload();
    transport.Then(200, R"([{"id":"D9","epmMaster":{"cadName":")" + answeredName + "\"}}]");
    return Upload(("//plm/Products/Gadget/Folders/" + leaf).c_str(), mainPath.c_str(), "", noLinks, Status(),
                  {}, nullptr, false);
  }
  [[nodiscard]] bool PostedName(const std::string& name) const {
    const std::string body = transport.requests().back().body.value_or("");
    return body.find(R"("cadName":")" + name + R"(","authoringApplication")") != std::string::npos;
  }
  [[nodiscard]] Lines Searches() const { return {transport.lines()[4], transport.lines()[5]}; }
  // An iteration whose ticket leads there.
  void IterateTo(const std::string& uploadUrl) {
    ThenPlainDocument();
    transport.Then(200, R"({"id":"D1"})");
    ThenNonce();
    transport
        .Then(200,
              R"({"masterUrl":"m","fileNames":["f1"],"streamIds":["901"],"uploadUrl":")" + uploadUrl + "\"}")
        .Then(200, Receipts(1))
        .Then(200, storedDocument);
    EXPECT_TRUE(Upload(uidOfD1, mainPath.c_str(), "", noLinks, Status(), {}, nullptr, false)) << uploadUrl;
  }
};

// The path has them escaped. The search is made for the plain name and for the name as it is; the new
// document gets the latter.
TEST_F(BadNames, OfAllForbiddenCharacters) {
  const std::string leaf = "%7c%5c%2f%3c%3e%3a%22%3f%2a%25";
  EXPECT_TRUE(Create(leaf, R"(|\\/<>:\"?*%)"));
  EXPECT_EQ(Searches(), (Lines{ObjectsLine("%7C%5C%2F%3C%3E%3A%22%3F%2A%25"),
                               ObjectsLine("%257c%255c%252f%253c%253e%253a%2522%253f%252a%2525")}));
  EXPECT_TRUE(PostedName(leaf)) << *transport.requests().back().body;
  EXPECT_EQ(statuses, Lines{"0 " + uidStem + "D9&file=/%7C%5C%2F%3C%3E%3A%22%3F%2A%25"});
}

TEST_F(BadNames, Of255Bytes) {
  const std::string leaf(255, 'n');
  EXPECT_TRUE(Create(leaf, leaf));
  EXPECT_EQ(Searches(), (Lines{ObjectsLine(leaf), ObjectsLine(leaf)}));
  EXPECT_TRUE(PostedName(leaf));
  EXPECT_EQ(statuses, Lines{"0 " + uidStem + "D9&file=/" + leaf});
}

TEST_F(BadNames, OfBytesBeyondAscii) {
  EXPECT_TRUE(Create("Größe.fnl", "Größe.fnl"));
  EXPECT_EQ(Searches()[0], ObjectsLine("Gr%C3%B6%C3%9Fe.fnl"));
  EXPECT_TRUE(PostedName("Größe.fnl"));
  EXPECT_EQ(statuses, Lines{"0 " + uidStem + "D9&file=/Gr%C3%B6%C3%9Fe.fnl"});
}

// Bytes that are no text of any kind.
TEST_F(BadNames, OfBytesThatAreNoUtf8) {
  EXPECT_TRUE(Create("\xff\xfe\xc3.fnl", "x"));
  EXPECT_EQ(Searches()[0], ObjectsLine("%FF%FE%C3.fnl"));
  EXPECT_TRUE(PostedName("\xff\xfe\xc3.fnl"));
}

TEST_F(BadNames, OfQuotesAndControlBytesAreEscapedAsJsonHasIt) {
  EXPECT_TRUE(Create("a\"\n\t\\b", "x"));
  EXPECT_EQ(Searches()[0], ObjectsLine("a%22%0A%09%5Cb"));
  EXPECT_TRUE(PostedName(R"(a\"\n\t\\b)")) << *transport.requests().back().body;
}

TEST_F(BadNames, OfUploadAddressesAreCutAtTheirPath) {
  struct Row {
    const char* url;
    const char* server;
    const char* line;
  };
  constexpr Row table[] = {
      {"https://files.example:8443/up/load?k=1", "https://files.example:8443", "POST /up/load?k=1"},
      {"http://files.example/u", "http://files.example", "POST /u"},
      {"https://anna@files.example/u", "https://anna@files.example", "POST /u"},
      {"https://files.example/", "https://files.example", "POST /"},
      {"https://files.example", "https://files.example", "POST "},
      {"https://files.example?k=1", "https://files.example?k=1", "POST "},
      {"https://plm.example/vt/up", "https://plm.example", "POST /vt/up"},
      {"http://[::1]:81/u//v", "http://[::1]:81", "POST /u//v"},
  };
  for (const Row& row : table) {
    UpdateServerList({});
    UpdateServerList({{"plm", plmUrl}});
    transport.ClearRequests();
    IterateTo(row.url);
    ASSERT_EQ(transport.requests().size(), 8u) << row.url;
    EXPECT_EQ(transport.requests()[6].server, row.server);
    EXPECT_EQ(transport.requests()[6].line, row.line);
    EXPECT_EQ(transport.requests()[6].headers, uploadHeaders);
  }
}

// A general document's path list leaves out what is not there; a Fenlet's main file always has its place.
TEST_F(BadNames, OfNoLocalFileAtAll) {
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, R"({"contentInfos":[]})").Then(200, storedDocument);
  EXPECT_TRUE(Upload(FileTypeGeneral, uidOfD1, "", Status(), {}, nullptr, false));
  EXPECT_EQ(transport.requests()[5].body, "{\n\"noOfFiles\":0\n}");
  EXPECT_EQ(transport.requests()[6].body, Multipart("", {}));
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})");
  transport.Then(200, Ticket(1)).Then(200, R"({"contentInfos":[]})").Then(200, storedDocument);
  EXPECT_TRUE(Upload(FileTypeFenlet, uidOfD1, "", Status(), {}, nullptr, false));
  EXPECT_EQ(transport.requests()[12].body, "{\n\"noOfFiles\":1\n}");
  EXPECT_EQ(transport.requests()[13].body, Multipart("901:f1:901;", {}));
}

}  // namespace
}  // namespace vtdirect_test
