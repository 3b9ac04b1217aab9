#include "tests/wire/public/uploads/upload_front_fixture.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::IsEmpty;

std::function<void()> task;
bool acceptsTasks = true;
bool KeepTask(std::function<void()> given) {
  task = std::move(given);
  return acceptsTasks;
}

using UploadingLater = UploadFrontTest;

TEST_F(UploadingLater, WithoutATaskRunnerRunsInTheCall) {
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

TEST_F(UploadingLater, AsATaskTransfersWhenTheRunnerRunsItWhateverBecameOfArgumentsAndServers) {
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

TEST_F(UploadingLater, AsATaskResolvesItsLinksBeforeTheTaskAndBeforeItLooksAtTheDocument) {
  RegisterTaskRunner(KeepTask);
  acceptsTasks = true;
  ThenSchema();
  transport.Then(404).Then(404).Then(404);
  transport.Then(200, R"([{"id":"D7","attributes":{"number":"0043"}}])").Then(200, R"({"id":"D7"})");
  transport.Then(200, R"({"id":"D1"})").Then(200, "[]");
  const std::map<std::string, std::string> links{{"bolt", "//plm/Products/Gadget/Folders/bolt.fnl"}};
  EXPECT_TRUE(UploadAsync(uidOfD1, mainPath.c_str(), "", links, Status(), {}, nullptr, false));
  const Lines prepared{probeLine,
                       Get("servlet/odata/DataAdmin/$metadata"),
                       probeLine,
                       Get("servlet/odata/CADDocumentMgmt/$metadata"),
                       Get("servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter="
                           "CADName eq 'bolt.fnl'"),
                       DocumentLine("D7"),
                       DocumentLine("D1"),
                       versionsLine};
  EXPECT_EQ(transport.lines(), prepared);
  transport.Then(200, R"({"id":"D1"})").Then(200, R"({"epmMaster":{"id":"M7","cadName":"bolt.fnl"}})");
  ThenNonce();
  ThenUpload();
  transport.Then(200, storedDocument);
  task();
  task = {};
  EXPECT_EQ(transport.lines(), Join(prepared, {DocumentLine("D1"), DocumentLine("D7"), Get(noncePath),
                                               Post(factoryPath), uploadLine, Post(documentsPath)}));
}

TEST_F(UploadingLater, AsATaskThatTheRunnerRefusesFailsSilently) {
  RegisterTaskRunner(KeepTask);
  acceptsTasks = false;
  ThenPlainDocument();
  EXPECT_FALSE(UploadAsync(uidOfD1, mainPath.c_str(), "", noLinks, Status(), {}, nullptr, false));
  task = {};
  EXPECT_THAT(statuses, IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(UploadingLater, ChecksInWhenAsked) {
  const std::string uid = uidStem + "D2|W12";
  const char* file = mainPath.c_str();
  const std::vector<std::function<bool()>> forms{
      [&] { return UploadAsync(uid.c_str(), file, "", noLinks, Status(), {}, nullptr, true); },
      [&] { return UploadAsync(FileTypeFenlet, uid.c_str(), file, Status(), {}, nullptr, true); },
      [&] {
        return UploadFenletAsync(uid.c_str(), file, {"", nullptr, nullptr, nullptr}, Status(), {}, true);
      },
  };
  for (std::size_t form = 0; form < forms.size(); ++form) {
    UpdateServerList({});
    UpdateServerList({{"plm", plmUrl}});
    ThenSchema();
    transport.Then(200, copyOfD1).Then(200, originalOfCopy);
    ThenStore(copyOfD1);
    transport.Then(200, storedDocument);
    EXPECT_TRUE(forms[form]()) << form;
    EXPECT_EQ(transport.lines().back(), Post(workspacesPath + "/W12/checkin")) << form;
    EXPECT_EQ(statuses.back(), "0 " + uidStem + "D9|W12&file=/pump.fnl") << form;
  }
}

TEST_F(UploadingLater, OfAFenletWithAllThatItCanHave) {
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

TEST_F(UploadingLater, OfAFenletWithNothingBesideItsContent) {
  const UploadFenletParams params{"", nullptr, nullptr, nullptr};
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(200, storedDocument).Then(200);
  EXPECT_TRUE(UploadFenletAsync(temporaryUid.c_str(), mainPath.c_str(), params, Status(), {}, false));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
}

}  // namespace
}  // namespace vtdirect_test
