#include "tests/wire/upload/upload_front_fixture.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::IsEmpty;

const std::string temporaryUid = uidStem + "D1001|W77|D1002|T";
const std::string versionsLine = DocumentLine("D1") + "/versions?contextId=";
const Lines iterationLines{DocumentLine("D1"), Get(noncePath), Post(factoryPath), uploadLine,
                           Post(documentsPath)};
const TraceLine uploaded = Information("Uploaded document id D9 (A.2)\n");

Lines Join(Lines first, const Lines& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

std::function<void()> task;
bool acceptsTasks = true;
bool KeepTask(std::function<void()> given) {
  task = std::move(given);
  return acceptsTasks;
}

class Uploading : public UploadFrontTest {
 protected:
  bool UploadFenlet(const std::string& path, bool checkIn = false) {
    return Upload(path.c_str(), mainPath.c_str(), "", noLinks, Status(), {}, nullptr, checkIn);
  }
  bool UploadPlain(const std::string& path, FileType kind = FileTypeFenlet, bool checkIn = false) {
    return Upload(kind, path.c_str(), mainPath.c_str(), Status(), {}, nullptr, checkIn);
  }
  void ThenIterate() {
    transport.Then(200, R"({"id":"D1"})");
    ThenNonce();
    ThenUpload();
    transport.Then(200, storedDocument);
  }
  // The server answers, and has the temporary checkout.
  void ThenTemporaryCheckout() {
    ThenSchema();
    transport.Then(200, R"({"id":"D1001"})");
  }
  void ThenStore(const char* working = R"({"id":"D1002"})") {
    transport.Then(200, working);
    ThenNonce();
    ThenUpload();
    transport.Then(200, "[]");
  }
};

TEST_F(Uploading, ToAPlainDocumentMakesAnIterationAndNeverChecksIn) {
  for (const bool checkIn : {false, true}) {
    UpdateServerList({});
    UpdateServerList({{"plm", plmUrl}});
    (void)ShouldInvalidateCache(true);
    transport.ClearRequests();
    trace.Clear();
    statuses.clear();
    ThenPlainDocument();
    ThenIterate();
    EXPECT_TRUE(UploadFenlet(uidOfD1, checkIn));
    EXPECT_EQ(transport.lines(), Join({probeLine, DocumentLine("D1"), versionsLine}, iterationLines));
    EXPECT_EQ(statuses, Lines{"0 " + storedUid});
    EXPECT_EQ(trace.lines(), (Traces{Storing(), uploaded}));
    EXPECT_TRUE(ShouldInvalidateCache(false));
  }
}

TEST_F(Uploading, ToATemporaryCheckoutChecksInByItself) {
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(200, storedDocument).Then(200);
  EXPECT_TRUE(UploadFenlet(temporaryUid));
  EXPECT_EQ(transport.lines(),
            (Lines{probeLine, DocumentLine("D1001"), DocumentLine("D1002"), Get(noncePath), Post(factoryPath),
                   uploadLine, Post(workspacesPath + "/W77/store"), Post(workspacesPath + "/W77/checkin"),
                   Post(workspacesPath + "/W77/delete")}));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
  EXPECT_EQ(
      trace.lines(),
      (Traces{Storing(), Miss("Checked-in document id D1002 on workspace W77 giving id D9\n"), uploaded}));
}

TEST_F(Uploading, OfAnyKindToATemporaryCheckoutChecksInOnlyWhenAsked) {
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(200, R"({"id":"D1001","revision":"A","iteration":"1","epmMaster":{"cadName":"pump.fnl"}})");
  EXPECT_TRUE(UploadPlain(temporaryUid));
  EXPECT_EQ(transport.lines().back(), DocumentLine("D1001"));
  EXPECT_EQ(statuses, Lines{"0 " + temporaryUid + "&file=/pump.fnl"});
  EXPECT_EQ(trace.lines().back(), Information("Uploaded document id D1001|W77|D1002|T (A.1)\n"));
  ThenTemporaryCheckout();
  transport.Then(200, R"({"id":"D1002"})");
  ThenUpload();
  transport.Then(200, "[]").Then(200, storedDocument).Then(200);
  EXPECT_TRUE(UploadPlain(temporaryUid, FileTypeFenlet, true));
  EXPECT_EQ(transport.lines().back(), Post(workspacesPath + "/W77/delete"));
}

TEST_F(Uploading, ToACopyInTheUsersWorkspaceLeavesItCheckedOutUnlessAsked) {
  const char* copy =
      R"({"id":"D2","revision":"A","iteration":"1","context":{"id":"C5"},
          "epmMaster":{"number":"0042","cadName":"pump.fnl"},"pdmIterationState":{"isCheckoutByYou":true}})";
  const char* original = R"([{"id":"D1","revision":"A","iteration":"1"}])";
  ThenSchema();
  transport.Then(200, copy).Then(200, original);
  ThenStore(copy);
  transport.Then(200, copy);
  EXPECT_TRUE(UploadFenlet(uidStem + "D2|W12"));
  EXPECT_EQ(transport.lines(),
            (Lines{probeLine, DocumentLine("D2"), Get(documentsPath + "/search?number=0042&scope=C5"),
                   DocumentLine("D2"), Get(noncePath), Post(factoryPath), uploadLine,
                   Post(workspacesPath + "/W12/store"), DocumentLine("D2")}));
  EXPECT_EQ(statuses, Lines{"0 " + uidStem + "D2|W12&file=/pump.fnl"});
  ThenSchema();
  transport.Then(200, copy).Then(200, original).Then(200, copy);
  ThenUpload();
  transport.Then(200, "[]").Then(200, storedDocument);
  EXPECT_TRUE(UploadFenlet(uidStem + "D2|W12", true));
  EXPECT_EQ(transport.lines().back(), Post(workspacesPath + "/W12/checkin"));
  EXPECT_EQ(statuses.back(), "0 " + uidStem + "D9|W12&file=/pump.fnl");
}

TEST_F(Uploading, StandsEvenWhenTheStoredDocumentCannotBeRead) {
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(500);
  EXPECT_TRUE(UploadPlain(temporaryUid));
  EXPECT_EQ(statuses, Lines{"0 " + uidStem});
  EXPECT_EQ(trace.lines(),
            (Traces{Storing(), Error("Failed to locate document D1001|W77|D1002|T on server\n"),
                    Information("Uploaded document id  ()\n")}));
  EXPECT_TRUE(ShouldInvalidateCache(false));
}

TEST_F(Uploading, ThatCannotBeCheckedInFailsLikeTheStore) {
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(409, "stale");
  EXPECT_FALSE(UploadFenlet(temporaryUid));
  EXPECT_EQ(statuses, Lines{"9 (null)"});
  EXPECT_FALSE(ShouldInvalidateCache(false));
}

TEST_F(Uploading, TellsWhatItFailedAt) {
  ThenPlainDocument();
  transport.Then(404);
  EXPECT_FALSE(UploadFenlet(uidOfD1));
  ThenTemporaryCheckout();
  transport.Then(404);
  EXPECT_FALSE(UploadFenlet(temporaryUid));
  ThenNewName();
  transport.Then(200, R"({"items":[]})");
  EXPECT_FALSE(UploadFenlet("//plm/Products/Gadget/Folders/a.fnl"));
  EXPECT_EQ(statuses, (Lines{"8 (null)", "9 (null)", "7 (null)"}));
  EXPECT_FALSE(ShouldInvalidateCache(false));
}

TEST_F(Uploading, AboveTheServersLimitTellsSoWhateverItWas) {
  const Answer tooLarge{413, "", du::http::ErrorCode::TooLarge};
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(tooLarge);
  EXPECT_FALSE(UploadFenlet(uidOfD1));
  ThenTemporaryCheckout();
  transport.Then(200, R"({"id":"D1002"})").Then(200, Ticket(1)).Then(tooLarge);
  EXPECT_FALSE(UploadFenlet(temporaryUid));
  ThenNewName();
  transport.Then(200, R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})")
      .Then(200, Ticket(1))
      .Then(tooLarge);
  EXPECT_FALSE(UploadFenlet("//plm/Products/Gadget/Folders/a.fnl"));
  EXPECT_EQ(statuses, (Lines{"11 (null)", "11 (null)", "11 (null)"}));
}

TEST_F(Uploading, ToANewPathCreatesADocument) {
  ThenNewName();
  transport.Then(200, R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})")
      .Then(200, R"({"items":[{"id":"F1","attributes":{"name":"Sub"}}]})");
  ThenNonce();
  ThenUpload();
  transport.Then(201, storedDocument);
  EXPECT_TRUE(UploadFenlet("//plm/Products/Gadget/Folders/Sub/pump.fnl", true));
  const std::string objectsLine =
      Get("servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter=CADName eq 'pump.fnl'");
  EXPECT_EQ(transport.lines(), (Lines{probeLine, Get("servlet/odata/DataAdmin/$metadata"), probeLine,
                                      Get("servlet/odata/CADDocumentMgmt/$metadata"), objectsLine,
                                      objectsLine, Get("servlet/rest/v1/contexts?type=Product"),
                                      Get("servlet/rest/v1/contexts/OR%3Avn.Product%3A5/folders"),
                                      Get(noncePath), Post(factoryPath), uploadLine, Post(documentsPath)}));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
  const Traces lines = Traced();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[lines.size() - 2], Storing("Products/Gadget/Folders/Sub/pump.fnl"));
  EXPECT_EQ(lines.back(), uploaded);
}

TEST_F(Uploading, OfAKindStoresWhatThatKindHas) {
  ThenPlainDocument();
  ThenIterate();
  EXPECT_TRUE(UploadPlain(uidOfD1, FileTypeUgc));
  EXPECT_NE(transport.requests().back().body->find(R"("category":"DOVA_UGC")"), std::string::npos);
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})");
  ThenUpload();
  transport.Then(200, storedDocument);
  EXPECT_TRUE(UploadPlain(uidOfD1, FileTypeGeneral));
  EXPECT_NE(transport.requests().back().body->find(R"("category":"GENERAL")"), std::string::npos);
}

TEST_F(Uploading, OfAnUnknownKindStoresAFenlet) {
  for (const int kind : {3, -1, 1000}) {
    UpdateServerList({});
    UpdateServerList({{"plm", plmUrl}});
    ThenPlainDocument();
    ThenIterate();
    EXPECT_TRUE(UploadPlain(uidOfD1, static_cast<FileType>(kind)));
    EXPECT_NE(transport.requests().back().body->find(R"("category":"FENLET")"), std::string::npos);
  }
}

TEST_F(Uploading, NeedsNoCallbacks) {
  ThenPlainDocument();
  ThenIterate();
  EXPECT_TRUE(Upload(uidOfD1, mainPath.c_str(), "", noLinks, {}, {}, nullptr, false));
  transport.Then(404).Then(500);
  EXPECT_FALSE(Upload(uidOfD1, mainPath.c_str(), "", noLinks, {}, {}, nullptr, false));
}

TEST_F(Uploading, TellsItsProgressAndTakesALanguage) {
  ThenPlainDocument();
  ThenIterate();
  std::size_t told = 0;
  const auto progress = [&](std::size_t done, std::size_t) {
    told = done;
    return true;
  };
  EXPECT_TRUE(Upload(uidOfD1, mainPath.c_str(), "", noLinks, Status(), progress, "de", false));
  EXPECT_EQ(told, transport.requests()[6].body->size());
  EXPECT_NE(transport.requests().back().body->find(R"("parameterValue":{"value":"de"})"), std::string::npos);
}

TEST_F(Uploading, WithoutATaskRunnerRunsInTheCall) {
  ThenPlainDocument();
  ThenIterate();
  EXPECT_TRUE(UploadAsync(uidOfD1, mainPath.c_str(), "", noLinks, Status(), {}, nullptr, false));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
  ThenPlainDocument();
  transport.Then(404);
  // The task was run; what came of it is told by the status alone.
  EXPECT_TRUE(UploadAsync(FileTypeGeneral, uidOfD1, mainPath.c_str(), Status(), {}, nullptr, false));
  EXPECT_EQ(statuses.back(), "8 (null)");
}

TEST_F(Uploading, AsATaskTransfersWhenTheRunnerRunsItWhateverBecameOfArgumentsAndServers) {
  RegisterTaskRunner(KeepTask);
  acceptsTasks = true;
  ThenPlainDocument();
  {
    std::string path = uidOfD1;
    std::string file = mainPath;
    std::string viewable;
    std::string language = "de";
    std::map<std::string, std::string> links;
    EXPECT_TRUE(UploadAsync(path.c_str(), file.c_str(), viewable.c_str(), links, Status(), {},
                            language.c_str(), false));
    path.assign(path.size(), 'x');
    file.assign(file.size(), 'x');
    language.assign(language.size(), 'x');
  }
  EXPECT_EQ(transport.lines(), (Lines{probeLine, DocumentLine("D1"), versionsLine}));
  EXPECT_THAT(statuses, IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
  UpdateServerList({});
  ThenIterate();
  task();
  task = {};
  EXPECT_EQ(transport.lines(), Join({probeLine, DocumentLine("D1"), versionsLine}, iterationLines));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
  EXPECT_NE(transport.requests().back().body->find(R"("value":"de")"), std::string::npos);
}

TEST_F(Uploading, AsATaskThatTheRunnerRefusesFailsSilently) {
  RegisterTaskRunner(KeepTask);
  acceptsTasks = false;
  ThenPlainDocument();
  EXPECT_FALSE(UploadAsync(uidOfD1, mainPath.c_str(), "", noLinks, Status(), {}, nullptr, false));
  task = {};
  EXPECT_THAT(statuses, IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Uploading, OfAFenletWithAllThatItCanHave) {
  const std::string viewable = directory.File("local/view.lxz");
  const std::string metadata = directory.File("local/meta.json");
  WriteFile(viewable, "VIEW");
  WriteFile(metadata, "{}");
  const std::map<std::string, std::string> links{{"bo%7clt", uidStem + "D7"}};
  const UploadFenletParams params{viewable.c_str(), metadata.c_str(), &links, "de"};
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})").Then(200, R"({"epmMaster":{"id":"M7","cadName":"bolt.fnl"}})");
  ThenNonce();
  transport.Then(200, Ticket(3)).Then(200, Receipts(3)).Then(200, storedDocument);
  EXPECT_TRUE(UploadFenletAsync(uidOfD1, mainPath.c_str(), params, Status(), {}, false));
  EXPECT_EQ(transport.lines(),
            (Lines{probeLine, DocumentLine("D1"), versionsLine, DocumentLine("D1"), DocumentLine("D7"),
                   Get(noncePath), Post(factoryPath), uploadLine, Post(documentsPath)}));
  EXPECT_EQ(transport.requests()[7].body,
            Multipart("901:f1:901;902:f2:902;903:f3:903;",
                      {{"f1", "main.fnl", "MAIN"}, {"f2", "view.lxz", "VIEW"}, {"f3", "meta.json", "{}"}}));
  const std::string body = *transport.requests().back().body;
  EXPECT_NE(body.find(R"("asStoredChildName":"bo|lt")"), std::string::npos) << body;
  EXPECT_NE(body.find(R"("category":"VCSINFO")"), std::string::npos) << body;
  EXPECT_NE(body.find(R"("value":"de")"), std::string::npos) << body;
  EXPECT_EQ(trace.lines(), (Traces{Information("Storing document (" + mainPath + " " + viewable + ") to (<" +
                                               metadata + "> - <>)\n"),
                                   uploaded}));
}

TEST_F(Uploading, OfAFenletWithNothingBesideItsContent) {
  const UploadFenletParams params{"", nullptr, nullptr, nullptr};
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(200, storedDocument).Then(200);
  EXPECT_TRUE(UploadFenletAsync(temporaryUid.c_str(), mainPath.c_str(), params, Status(), {}, false));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
}

TEST_F(Uploading, OfAFileThatIsNotThereIsTheServersToRefuse) {
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(400, "no parts");
  EXPECT_FALSE(Upload(uidOfD1, "/nowhere/x", "", noLinks, Status(), {}, nullptr, false));
  EXPECT_EQ(transport.requests().back().body, Multipart("901:f1:901;", {}));
  EXPECT_EQ(statuses, Lines{"8 (null)"});
}

}  // namespace
}  // namespace vtdirect_test
