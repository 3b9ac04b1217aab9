#include "public/vt_direct_utils.h"
#include "tests/wire/public/listed_server.h"

namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

constexpr const char* resultUid = "korvufenloom-vt://plm.example/vt/?id=D1&file=/fork%201.lxz";

using Download = ListedServerTest;
using DownloadUrl = ListedServerTest;
using LocalCopy = ListedServerTest;
using ObjectQuestions = ListedServerTest;

TEST_F(Download, ByUidReadsTheDocumentAndFetchesItsContent) {
  transport.Then(200, documentJson).Then(200, "bytes");
  std::string uid;
  EXPECT_TRUE(GetFile(uidOfD1, directory.File("copy").c_str(), uid, Status(), {}));
  EXPECT_EQ(transport.requests(), (Requests{{plmUrl, documentLine, "Accept: application/json", {}},
                                            {"https://files.example:8443", "GET /store/f1?t=7", "", {}}}));
  EXPECT_EQ(ReadFile(directory.File("copy")), "bytes");
  EXPECT_EQ(uid, resultUid);
  EXPECT_EQ(statuses, Lines{std::string("0 ") + resultUid});
  EXPECT_EQ(trace.lines(), (Traces{{0, "VtDirect", std::string("Downloading ") + uidOfD1 + "\n"},
                                   {0, "VtDirect", std::string("Downloading ") + uidOfD1 + " succeeded\n"}}));
}

TEST_F(Download, OfAPathByIdMakesNoRequestToFindTheId) {
  transport.Then(200, documentJson).Then(200, "bytes");
  std::string uid;
  EXPECT_TRUE(GetFile("korvufenloom-vfs://plm/?id=D1", directory.File("copy").c_str(), uid, {}, {}));
  EXPECT_EQ(transport.lines(), (Lines{documentLine, "GET /store/f1?t=7"}));
}

TEST_F(Download, OfACheckoutKeepsTheWholeIdInTheUid) {
  transport.Then(200, documentJson).Then(200, "bytes");
  std::string uid;
  EXPECT_TRUE(GetFile("korvufenloom-vt://plm.example/vt/?id=D1|W2|D3|T", directory.File("copy").c_str(), uid,
                      {}, {}));
  EXPECT_EQ(transport.lines().front(), documentLine);
  EXPECT_EQ(uid, "korvufenloom-vt://plm.example/vt/?id=D1|W2|D3|T&file=/fork%201.lxz");
}

TEST_F(Download, ThatIsRefusedTracesTheAnswerAndThenTheEnd) {
  transport.Then(200, documentJson).Then(403, "no ticket");
  std::string uid = "before";
  EXPECT_FALSE(GetFile(uidOfD1, directory.File("copy").c_str(), uid, Status(), {}));
  EXPECT_EQ(uid, "before");
  EXPECT_EQ(statuses, Lines{"10 (null)"});
  EXPECT_EQ(ReadFile(directory.File("copy")), "no ticket");
  EXPECT_EQ(trace.lines(), (Traces{{0, "VtDirect", std::string("Downloading ") + uidOfD1 + "\n"},
                                   {3, "VtDirect", "Failed to download file D1 with error: no ticket"},
                                   {3, "VtDirect", std::string("Failed to download ") + uidOfD1 + "\n"}}));
}

TEST_F(Download, OfADocumentThatIsNotThereReportsTheEnd) {
  transport.Then(404);
  std::string uid;
  EXPECT_FALSE(GetFile(uidOfD1, directory.File("copy").c_str(), uid, Status(), {}));
  EXPECT_EQ(statuses, Lines{"10 (null)"});
  EXPECT_TRUE(directory.Entries().empty());
}

TEST_F(Download, WithoutALocalPathFailsAndDoesNotCrash) {
  transport.Then(200, documentJson).Then(200, "bytes");
  std::string uid;
  EXPECT_FALSE(GetFile(uidOfD1, nullptr, uid, Status(), {}));
  EXPECT_EQ(statuses, Lines{"10 (null)"});
}

TEST_F(Download, AsATaskProbesTheServerFirst) {
  ThenSchema();
  transport.Then(200, documentJson).Then(200, "bytes");
  EXPECT_TRUE(GetFileAsync(uidOfD1, directory.File("copy").c_str(), Status(), {}));
  EXPECT_EQ(transport.lines(),
            (Lines{"GET /vt/servlet/odata/DynamicDocMgmt/$metadata", documentLine, "GET /store/f1?t=7"}));
  EXPECT_EQ(statuses, Lines{std::string("0 ") + resultUid});
  EXPECT_EQ(directory.Entries(), Lines{"copy"});
}

TEST_F(Download, AsATaskOfAServerThatAnswersNothingReportsOnce) {
  transport.ThenFail(du::http::ErrorCode::NoConnection).ThenFail(du::http::ErrorCode::NoConnection);
  EXPECT_FALSE(GetFileAsync(uidOfD1, directory.File("copy").c_str(), Status(), {}));
  EXPECT_EQ(transport.lines(),
            (Lines{"GET /vt/servlet/odata/DynamicDocMgmt/$metadata", "GET /vt/servlet/rest/v1/contexts"}));
  EXPECT_EQ(statuses, Lines{"1 (null)"});
  EXPECT_EQ(trace.lines().back(),
            (TraceLine{3, "VtDirect", std::string("Failed to connect to server path ") + uidOfD1 + "\n"}));
}

TEST_F(DownloadUrl, TransfersNothing) {
  for (int i = 0; i < 3; ++i) ThenSchema();
  transport.Then(200, documentJson);
  std::string url;
  std::string key;
  EXPECT_TRUE(GetFileDownloadURL(uidOfD1, url, &key));
  EXPECT_EQ(url, contentUrl);
  EXPECT_EQ(key, "_lxvdccache:korvufenloom-vt%3A%2F%2Fplm.example%2Fvt%2F://S1%3A17&file=/fork%201.lxz");
  EXPECT_EQ(transport.lines().back(), documentLine);
}

TEST_F(DownloadUrl, ReplacesEveryPlaceOfTheNameInTheFilesPattern) {
  for (int i = 0; i < 3; ++i) ThenSchema();
  transport.Then(200, R"({"epmMaster":{"cadName":"a{$CAD_NAME}"},"cadContent":{"contentSections":[
      {"id":"S1","fileName":"{$CAD_NAME}-{$CAD_NAME}.x"}]}})");
  std::string url;
  std::string key;
  EXPECT_TRUE(GetFileDownloadURL(uidOfD1, url, &key));
  EXPECT_EQ(url, "");
  EXPECT_TRUE(key.ends_with("S1%3A0&file=/a%7B%24CAD_NAME%7D-a%7B%24CAD_NAME%7D.x")) << key;
}

TEST_F(DownloadUrl, OfADocumentWithoutContentIsEmpty) {
  for (int i = 0; i < 3; ++i) ThenSchema();
  transport.Then(200, R"({"id":"D1"})");
  std::string url = "before";
  EXPECT_TRUE(GetFileDownloadURL(uidOfD1, url, nullptr));
  EXPECT_EQ(url, "");
}

TEST_F(DownloadUrl, OfADocumentThatIsNotThereFails) {
  for (int i = 0; i < 3; ++i) ThenSchema();
  transport.Then(404);
  std::string url = "before";
  EXPECT_FALSE(GetFileDownloadURL(uidOfD1, url, nullptr));
  EXPECT_EQ(url, "before");
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to locate document D1 on server\n"}}));
}

TEST_F(LocalCopy, HoldsTheContentAndGoesWithItsHolder) {
  transport.Then(200, documentJson).Then(200, "bytes");
  auto holder = VtDirectUtils::GetLocalFile("korvufenloom-vt://plm.example/vt/?id=D1&file=/a%7Cb");
  ASSERT_NE(holder, nullptr);
  ASSERT_EQ(directory.Entries().size(), 1u);
  EXPECT_EQ(holder->GetLocalPath(), directory.File(directory.Entries().front()) + "/a%7cb");
  EXPECT_EQ(ReadFile(holder->GetLocalPath()), "bytes");
  holder.reset();
  EXPECT_TRUE(directory.Entries().empty());
}

TEST_F(LocalCopy, OfARefusedContentLeavesNothingBehind) {
  transport.Then(200, documentJson).Then(500, "broken");
  EXPECT_EQ(VtDirectUtils::GetLocalFile("korvufenloom-vt://plm.example/vt/?id=D1&file=/a"), nullptr);
  EXPECT_TRUE(directory.Entries().empty());
}

TEST_F(ObjectQuestions, ReadTheObjectOnce) {
  transport.Then(200, documentJson).Then(404).Then(200, documentJson).Then(200, documentJson);
  EXPECT_TRUE(FileExists(uidOfD1));
  EXPECT_FALSE(FileExists(uidOfD1));
  EXPECT_EQ(GetFileName(uidOfD1), "fork 1.lxz");
  EXPECT_EQ(GetUID("//plm/?id=D1"), resultUid);
  EXPECT_EQ(transport.lines(), (Lines{documentLine, documentLine, documentLine, documentLine}));
}

TEST_F(ObjectQuestions, OfTheTextAloneMakeNoRequest) {
  EXPECT_TRUE(IsUID(uidOfD1));
  EXPECT_FALSE(IsVFSPath(uidOfD1));
  EXPECT_TRUE(IsManaged(uidOfD1));
  EXPECT_EQ(GetFileName("korvufenloom-vt://plm.example/vt/?id=D1&file=/a"), "a");
  EXPECT_EQ(GetFileName("korvufenloom-vfs://plm/Products/a"), "a");
  EXPECT_EQ(GetUID(resultUid), resultUid);
  EXPECT_EQ(GetVFSPathLatest("//plm/Products/a|B.3"), "korvufenloom-vfs://plm/Products/a");
  EXPECT_EQ(GetServerURL(uidOfD1), plmUrl);
  EXPECT_EQ(GetServerNickname(uidOfD1), "plm");
  EXPECT_TRUE(IsCheckoutSupported(uidOfD1));
  EXPECT_TRUE(transport.requests().empty());
}

}  // namespace
