#include "documents/storing/document_storing.h"

#include <functional>

#include "base/result.h"
#include "base/settings.h"
#include "documents/storing/document_building.h"
#include "tests/wire/documents/storing/storing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const std::string factoryBody3 = "{\n\"noOfFiles\":3\n}";

const std::string pumpDocument =
    R"({"epmDocument":{"epmMaster":{"category":"iso","subCategory":"FENLET","cadName":"pump.fnl",)"
    R"("authoringApplication":"MERIDOX"},"cadContent":{"contentSections":[{"category":"FENLET",)"
    R"("fileName":"{$CAD_NAME}","streamId":901,"uploadInfo":{"encodedCCD":"r1"}}]},"secondaryContents":[)"
    R"({"category":"VIEWABLE","fileName":"{$CAD_NAME}.lxz","streamId":902,"uploadInfo":{"encodedCCD":"r2"}},)"
    R"({"category":"VCSINFO","fileName":"cad-metadata.json","isHidden":true,"streamId":903,)"
    R"("uploadInfo":{"encodedCCD":"r3"}}],"authAppVersion":"310","ndVersion":"J-01","isDerived":false})";

class DocumentStoring : public StoringTest {
 protected:
  DocumentStoring() {
    params.viewablePath = viewable.c_str();
    params.vcsPath = vcs.c_str();
  }
  void ThenUploadOf3() {
    ThenNonce();
    transport.Then(200, Ticket(3)).Then(200, Receipts(3));
  }
  [[nodiscard]] SentRequest UploadOf3() const {
    return {uploadServer, uploadLine, uploadHeaders,
            Multipart("901:f1:901;902:f2:902;903:f3:903;",
                      {{"f1", "main.fnl", "MAIN"}, {"f2", "view.lxz", "VIEW"}, {"f3", "meta.json", "{}"}})};
  }

  std::string viewable = MakeLocal("view.lxz", "VIEW");
  std::string vcs = MakeLocal("meta.json", "{}");
};

TEST_F(DocumentStoring, CreatesADocumentInAFolder) {
  ThenUploadOf3();
  transport.Then(201, storedAnswer);
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"pump.fnl", "C5", "F55", ""}, params, {}), info), Ok);
  EXPECT_EQ(transport.requests(),
            (Requests{ReadNonce(), Write(factoryPath, factoryBody3), UploadOf3(),
                      Write(documentsPath, R"({"createInstructions":[)" + pumpDocument +
                                               R"(,"targetFolderId":"F55"}],"contextId":"C5"})")}));
  EXPECT_EQ(info.id, "D1002");
  EXPECT_EQ(info.version, "A.2");
  EXPECT_EQ(info.cadName, "pump.fnl");
  EXPECT_EQ(info.size, 12u);
  EXPECT_THAT(info.dependencies, ElementsAre(Pair("bolt", "D7")));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(DocumentStoring, CreatesADocumentWhereTheServerWantsIt) {
  ThenUploadOf3();
  transport.Then(200, "[]");
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"pump.fnl", "C5", "", ""}, params, {}), info), Ok);
  EXPECT_EQ(transport.requests().back().body,
            R"({"createInstructions":[)" + pumpDocument + R"(}],"contextId":"C5"})");
  EXPECT_EQ(info.id, "");
  EXPECT_EQ(info.version, ".");
}

TEST_F(DocumentStoring, CreatesADocumentInAWorkspace) {
  ThenUploadOf3();
  transport.Then(200, storedAnswer);
  EXPECT_EQ(
      HandOver(CreateDocumentInWorkspace(Begin(connection), {"pump.fnl", "C5", "", "W12"}, params, {}), info),
      Ok);
  EXPECT_EQ(transport.requests().back(),
            Write(workspacesPath + "/W12/store", R"({"storeInstructions":[)" + pumpDocument + "}]}"));
  EXPECT_EQ(info.id, "D1002|W12");
  EXPECT_EQ(info.version, "A.2");
}

TEST_F(DocumentStoring, OfAnAnswerWithoutADocumentGivesTheWorkspaceAlone) {
  ThenUploadOf3();
  transport.Then(200, "[]");
  EXPECT_EQ(
      HandOver(CreateDocumentInWorkspace(Begin(connection), {"pump.fnl", "C5", "", "W12"}, params, {}), info),
      Ok);
  EXPECT_EQ(info.id, "|W12");
}

TEST_F(DocumentStoring, TracesAFailedCreationWithItsThreeFilesAndItsPlace) {
  ThenNonce();
  transport.Then(500, "boom").Then(500, "boom");
  params.vcsPath.clear();
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"pump.fnl", "C5", "F55", ""}, params, {}), info),
            Refused);
  EXPECT_EQ(
      HandOver(CreateDocumentInWorkspace(Begin(connection), {"pump.fnl", "C5", "F55", "W12"}, params, {}),
               info),
      Refused);
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to update document with error 500 : boom\n"),
                                   Error("Failed to create document (" + mainPath + ", " + viewable +
                                         ", ) on server ctx C5, folder F55\n"),
                                   Error("Failed to update document with error 500 : boom\n"),
                                   Error("Failed to create document (" + mainPath + ", " + viewable +
                                         ", ) on server ctx C5, folder F55, workspace W12\n")}));
  EXPECT_EQ(info.id, "before");
}

TEST_F(DocumentStoring, ReadsNewDependenciesBeforeItUploads) {
  const std::map<std::string, std::string> map{{"bolt", "D7|W1"}, {"gone", "D8"}};
  params.dependencies = &map;
  params.viewablePath = "";
  params.vcsPath = "";
  transport.Then(200, R"({"epmMaster":{"id":"M7","cadName":"bolt.fnl"}})").Then(404);
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"pump.fnl", "C5", "", ""}, params, {}), info), Ok);
  EXPECT_EQ(transport.lines(), (Lines{Get(documentsPath + "/D7"), Get(documentsPath + "/D8"), Get(noncePath),
                                      Post(factoryPath), uploadLine, Post(documentsPath)}));
  EXPECT_NE(transport.requests().back().body->find(
                R"("isDerived":true,"derivedSourceDependencies":[{"asStoredChildName":"bolt",)"
                R"("isDirect":false,"source":{"id":"D7","epmMaster":{"id":"M7","cadName":"bolt.fnl"}}}]})"),
            std::string::npos)
      << *transport.requests().back().body;
}

TEST_F(DocumentStoring, RegistersTheVersionBehindTheUploadAndOnceAConnection) {
  SetAuthAppVersionToRegister("300");
  params.viewablePath = "";
  params.vcsPath = "";
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(204).Then(200, storedAnswer);
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"a", "C5", "", ""}, params, {}), info), Ok);
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"b", "C5", "", ""}, params, {}), info), Ok);
  EXPECT_EQ(transport.lines(),
            (Lines{Get(noncePath), Post(factoryPath), uploadLine, Post(registerPath), Post(documentsPath),
                   Post(factoryPath), uploadLine, Post(documentsPath)}));
  EXPECT_NE(transport.requests().back().body->find(R"("authAppVersion":"300")"), std::string::npos);
}

TEST_F(DocumentStoring, OfAGeneralDocumentUploadsItsContentAlone) {
  params.kind = DocumentKind::General;
  params.language = "de";
  const std::map<std::string, std::string> map{{"bolt", "D7"}};
  params.dependencies = &map;
  SetAuthAppVersion("271");
  SetAuthoringApplication("MYAPP");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"n.txt", "C5", "", ""}, params, {}), info), Ok);
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath), uploadLine, Post(documentsPath)}));
  EXPECT_EQ(
      transport.requests().back().body,
      R"({"createInstructions":[{"epmDocument":{"epmMaster":{"category":"OTHER","subCategory":"OTHER",)"
      R"("cadName":"n.txt","authoringApplication":"MYAPP"},"cadContent":{"contentSections":[)"
      R"({"category":"GENERAL","fileName":"{$CAD_NAME}","streamId":901,"uploadInfo":{"encodedCCD":"r1"}}]},)"
      R"("authAppVersion":"271","ndVersion":"J-01"}}],"contextId":"C5"})");
}

TEST_F(DocumentStoring, OfAUgcDocumentNegotiatesNoVersion) {
  params.kind = DocumentKind::Ugc;
  SetAuthAppVersionToRegister("300");
  SetAuthoringApplication("MYAPP");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"u", "C5", "", ""}, params, {}), info), Ok);
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath), uploadLine, Post(documentsPath)}));
  EXPECT_EQ(
      transport.requests().back().body,
      R"({"createInstructions":[{"epmDocument":{"epmMaster":{"category":"kdx","subCategory":"",)"
      R"("cadName":"u","authoringApplication":"DOVA"},"cadContent":{"contentSections":[)"
      R"({"category":"DOVA_UGC","fileName":"{$CAD_NAME}","streamId":901,"uploadInfo":{"encodedCCD":"r1"}}]},)"
      R"("authAppVersion":"42","ndVersion":"L-01"}}],"contextId":"C5"})");
  EXPECT_EQ(connection->knowledge().AuthAppVersion(), "");
}

TEST_F(DocumentStoring, OfAnUnknownKindDoesNothing) {
  params.kind = static_cast<DocumentKind>(3);
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"u", "C5", "F", ""}, params, {}), info), NotFound);
  transport.Then(200, "{}");
  EXPECT_EQ(HandOver(IterateDocument(Begin(connection), "D1", params, {}), info), NotFound);
  EXPECT_EQ(transport.lines(), Lines{Get(documentsPath + "/D1")});
  EXPECT_EQ(trace.lines().size(), 2u);
}

// Whoever hands in none has made a mistake that no server can answer for.
TEST_F(DocumentStoring, RaisesForAPosterThatIsNone) {
  ThenNonce();
  for (const DocumentKind kind : {DocumentKind::Fenlet, DocumentKind::General, DocumentKind::Ugc}) {
    params.kind = kind;
    transport.Then(200, Ticket(3)).Then(200, Receipts(3));
    EXPECT_THROW((void)BuildDocumentForCreate(Begin(connection), {"a", "", "F55", ""}, params, {}, {}),
                 std::bad_function_call);
    EXPECT_EQ(transport.lines().back(), uploadLine);
    EXPECT_THAT(Leftovers(), IsEmpty());
  }
}

TEST_F(DocumentStoring, TakesAMissingReceiptForAnEmptyOne) {
  params.vcsPath = "";
  ThenNonce();
  transport.Then(200, Ticket(2))
      .Then(200, R"({"contentInfos":[{"streamId":902,"encodedInfo":"only"}]})")
      .Then(200, storedAnswer);
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"a", "C5", "", ""}, params, {}), info), Ok);
  const std::string body = *transport.requests().back().body;
  EXPECT_NE(body.find(R"("streamId":0,"uploadInfo":{"encodedCCD":""}}]},"secondaryContents")"),
            std::string::npos)
      << body;
  EXPECT_NE(body.find(R"("streamId":902,"uploadInfo":{"encodedCCD":"only"})"), std::string::npos) << body;
}

TEST_F(DocumentStoring, IteratesADocumentThatIsNotCheckedOut) {
  params.viewablePath = "";
  params.vcsPath = "";
  transport.Then(200, R"({"id":"D1001","context":{"id":"C7"},"ndVersion":"J-02","authAppVersion":"207",
      "epmMaster":{"id":"M1","cadName":"pump.fnl","authoringApplication":"MERIDOX","category":"iso",
                   "subCategory":"FENLET"},
      "secondaryContents":[{"category":"PICTURE","fileName":"p.png","isForwardable":true}],
      "derivedSourceDependencies":[{"asStoredChildName":"bolt","isDirect":true,
        "source":{"id":"D7","epmMaster":{"id":"M7","cadName":"bolt.fnl"}}}],
      "fileBasedAttributes":[{"odd":1}]})");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
  EXPECT_EQ(HandOver(IterateDocument(Begin(connection), "D1001", params, {}), info), Ok);
  EXPECT_EQ(
      transport.requests(),
      (Requests{
          Read(documentsPath + "/D1001"),
          ReadNonce(),
          Write(factoryPath, "{\n\"noOfFiles\":1\n}"),
          {uploadServer, uploadLine, uploadHeaders, Multipart("901:f1:901;", {{"f1", "main.fnl", "MAIN"}})},
          Write(
              documentsPath,
              R"({"iterateInstructions":[{"epmDocument":{"id":"D1001","epmMaster":{"category":"iso",)"
              R"("subCategory":"FENLET","cadName":"pump.fnl","authoringApplication":"MERIDOX"},)"
              R"("cadContent":{"contentSections":[{"category":"FENLET","fileName":"{$CAD_NAME}",)"
              R"("streamId":901,"uploadInfo":{"encodedCCD":"r1"}}]},"secondaryContents":[)"
              R"({"category":"PICTURE","fileName":"p.png"}],"authAppVersion":"310","ndVersion":"J-02",)"
              R"("isDerived":true,"derivedSourceDependencies":[{"asStoredChildName":"bolt","isDirect":true,)"
              R"("source":{"id":"D7","epmMaster":{"id":"M7","cadName":"bolt.fnl"}}}],)"
              R"("fileBasedAttributes":[{"odd":1}]}}],"contextId":"C7","conflictResolutions":[)"
              R"({"code":"vn.epm.upload.EPMUploadConflictType.IMAGE_HAS_REP_RULE_WITH_OTHER_VERSION_OF_ORIGINAL",)"
              R"("resolutionOption":"vn.epm.upload.EPMUploadResolutionType.UPDATE_IMAGE_TO_NEW_VERSION",)"
              R"("appliedEntities":[{"type":"vn.epm.EPMDocument","field":"id","value":"D1001"}]}]})")}));
  EXPECT_EQ(info.id, "D1002");
  EXPECT_EQ(info.version, "A.2");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(DocumentStoring, CreatesAFenletOfTheHostsApplication) {
  SetAuthoringApplication("MYAPP");
  ThenUploadOf3();
  transport.Then(200, storedAnswer);
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"pump.fnl", "C5", "", ""}, params, {}), info), Ok);
  const std::string body = *transport.requests().back().body;
  EXPECT_NE(body.find(R"("cadName":"pump.fnl","authoringApplication":"MYAPP"})"), std::string::npos) << body;
  EXPECT_NE(body.find(R"("authAppVersion":"310")"), std::string::npos) << body;
}

TEST_F(DocumentStoring, IteratesWithTheApplicationThatWroteTheDocument) {
  SetAuthoringApplication("MYAPP");
  SetAuthAppVersion("271");
  transport.Then(200, R"({"id":"D1","authAppVersion":"207",
                          "epmMaster":{"cadName":"pump.fnl","authoringApplication":"MERIDOX"}})");
  ThenUploadOf3();
  transport.Then(200, storedAnswer);
  EXPECT_EQ(HandOver(IterateDocument(Begin(connection), "D1", params, {}), info), Ok);
  const std::string body = *transport.requests().back().body;
  EXPECT_NE(body.find(R"("cadName":"pump.fnl","authoringApplication":"MERIDOX"})"), std::string::npos)
      << body;
  EXPECT_NE(body.find(R"("authAppVersion":"207")"), std::string::npos) << body;
}

// The document is what the server calls it, and the conflict that of the id that was asked for.
TEST_F(DocumentStoring, NamesTheGivenIdInTheResolutionOfAnIteration) {
  transport.Then(200, R"({"id":"D9"})");
  ThenUploadOf3();
  transport.Then(200, storedAnswer);
  EXPECT_EQ(HandOver(IterateDocument(Begin(connection), "D1", params, {}), info), Ok);
  const std::string body = *transport.requests().back().body;
  EXPECT_TRUE(body.starts_with(R"({"iterateInstructions":[{"epmDocument":{"id":"D9",)")) << body;
  EXPECT_NE(body.find(R"("field":"id","value":"D1"})"), std::string::npos) << body;
}

TEST_F(DocumentStoring, OfAFenletWithMetadataAndNoViewableStoresTwoFiles) {
  params.viewablePath.clear();
  ThenNonce();
  transport.Then(200, Ticket(2)).Then(200, Receipts(2)).Then(200, storedAnswer);
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"pump.fnl", "C5", "", ""}, params, {}), info), Ok);
  EXPECT_EQ(transport.requests()[2].body,
            Multipart("901:f1:901;902:f2:902;", {{"f1", "main.fnl", "MAIN"}, {"f2", "meta.json", "{}"}}));
  const std::string body = *transport.requests().back().body;
  EXPECT_NE(body.find(R"("secondaryContents":[{"category":"VCSINFO","fileName":"cad-metadata.json",)"
                      R"("isHidden":true,"streamId":902,"uploadInfo":{"encodedCCD":"r2"}}])"),
            std::string::npos)
      << body;
}

TEST_F(DocumentStoring, ReadsNoDependenciesAtAnIterationOfAnotherKind) {
  const std::map<std::string, std::string> map{{"bolt", "D7"}};
  params.dependencies = &map;
  for (const DocumentKind kind : {DocumentKind::General, DocumentKind::Ugc}) {
    params.kind = kind;
    connection = NewConnection();
    transport.ClearRequests();
    transport.Then(200, R"({"id":"D1"})");
    ThenNonce();
    transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
    EXPECT_EQ(HandOver(IterateDocument(Begin(connection), "D1", params, {}), info), Ok);
    EXPECT_EQ(transport.lines(), (Lines{Get(documentsPath + "/D1"), Get(noncePath), Post(factoryPath),
                                        uploadLine, Post(documentsPath)}));
    EXPECT_EQ(transport.requests().back().body->find("erived"), std::string::npos);
  }
}

TEST_F(DocumentStoring, DropsDependenciesAtAnIterationWithAnEmptyMap) {
  const std::map<std::string, std::string> none;
  params.dependencies = &none;
  params.viewablePath = "";
  params.vcsPath = "";
  transport.Then(200, R"({"id":"D1","derivedSourceDependencies":[{"asStoredChildName":"bolt",
                          "source":{"id":"D7"}}]})");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
  EXPECT_EQ(HandOver(IterateDocument(Begin(connection), "D1", params, {}), info), Ok);
  const std::string body = *transport.requests().back().body;
  EXPECT_NE(body.find(R"("isDerived":false}}])"), std::string::npos) << body;
  EXPECT_EQ(body.find("derivedSourceDependencies"), std::string::npos) << body;
}

TEST_F(DocumentStoring, ReadsOnlyChangedDependenciesAtAnIteration) {
  const std::map<std::string, std::string> map{{"axle.fnl", "D6"}, {"bolt.fnl", "D7"}};
  params.dependencies = &map;
  params.viewablePath = "";
  params.vcsPath = "";
  transport
      .Then(200, R"({"id":"D1","derivedSourceDependencies":[
          {"asStoredChildName":"x","isDirect":true,"source":{"id":"D7","epmMaster":{"id":"M7","cadName":"bolt.fnl"}}},
          {"asStoredChildName":"y","source":{"id":"D9","epmMaster":{"id":"M9","cadName":"gone.fnl"}}}]})")
      .Then(200, R"({"epmMaster":{"id":"M6","cadName":"axle.fnl"}})");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
  EXPECT_EQ(HandOver(IterateDocument(Begin(connection), "D1", params, {}), info), Ok);
  EXPECT_EQ(transport.lines(), (Lines{Get(documentsPath + "/D1"), Get(documentsPath + "/D6"), Get(noncePath),
                                      Post(factoryPath), uploadLine, Post(documentsPath)}));
  const std::string body = *transport.requests().back().body;
  EXPECT_NE(body.find(R"("derivedSourceDependencies":[{"asStoredChildName":"axle.fnl","isDirect":false,)"
                      R"("source":{"id":"D6","epmMaster":{"id":"M6","cadName":"axle.fnl"}}},)"
                      R"({"asStoredChildName":"bolt.fnl","isDirect":true,)"
                      R"("source":{"id":"D7","epmMaster":{"id":"M7","cadName":"bolt.fnl"}}}])"),
            std::string::npos)
      << body;
}

TEST_F(DocumentStoring, StoresIntoACheckoutsWorkspace) {
  params.viewablePath = "";
  params.vcsPath = "";
  transport.Then(200, R"({"id":"D1002","context":{"id":"C7"}})");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
  EXPECT_EQ(StoreDocument(Begin(connection), ParseCheckoutId("D1001|W77|D1002|T"), params, {}), Ok);
  EXPECT_EQ(transport.lines(), (Lines{Get(documentsPath + "/D1002"), Get(noncePath), Post(factoryPath),
                                      uploadLine, Post(workspacesPath + "/W77/store")}));
  EXPECT_EQ(
      transport.requests().back().body,
      R"({"storeInstructions":[{"epmDocument":{"id":"D1002","epmMaster":{"category":"iso",)"
      R"("subCategory":"FENLET","cadName":"","authoringApplication":""},"cadContent":{"contentSections":[)"
      R"({"category":"FENLET","fileName":"{$CAD_NAME}","streamId":901,"uploadInfo":{"encodedCCD":"r1"}}]},)"
      R"("authAppVersion":"","ndVersion":"J-01","isDerived":false}}],"conflictResolutions":[)"
      R"({"code":"vn.epm.upload.EPMUploadConflictType.IMAGE_HAS_REP_RULE_WITH_OTHER_VERSION_OF_ORIGINAL",)"
      R"("resolutionOption":"vn.epm.upload.EPMUploadResolutionType.UPDATE_IMAGE_TO_NEW_VERSION",)"
      R"("appliedEntities":[{"type":"vn.epm.EPMDocument","field":"id","value":"D1002"}]}]})");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(DocumentStoring, NamesTheDocumentAsTheServerTellsItInTheResolutionOfAStore) {
  params.viewablePath = "";
  params.vcsPath = "";
  transport.Then(200, R"({"id":"D9"})");
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
  EXPECT_EQ(StoreDocument(Begin(connection), ParseCheckoutId("D1|W2"), params, {}), Ok);
  EXPECT_EQ(transport.lines().front(), Get(documentsPath + "/D1"));
  EXPECT_EQ(transport.lines().back(), Post(workspacesPath + "/W2/store"));
  EXPECT_NE(transport.requests().back().body->find(R"("field":"id","value":"D9")"), std::string::npos);
}

TEST_F(DocumentStoring, RefusesAnIdThatIsNoneOfACheckout) {
  Traces expected;
  for (const char* id : {"D1", "", "|W2", "D1|W77||T", "D1|", "D1|W2||xT"}) {
    EXPECT_EQ(StoreDocument(Begin(connection), ParseCheckoutId(id), params, {}), NotFound) << id;
    expected.push_back(Error(std::string("Bad id data for checkout ") + id + "\n"));
  }
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_EQ(trace.lines(), expected);
}

TEST_F(DocumentStoring, HandsTheProgressToTheUploadAlone) {
  ThenUploadOf3();
  transport.Then(201, storedAnswer);
  std::size_t last = 0;
  EXPECT_EQ(HandOver(CreateDocument(Begin(connection), {"pump.fnl", "C5", "F55", ""}, params,
                                    [&](std::size_t done, std::size_t) {
                                      last = done;
                                      return true;
                                    }),
                     info),
            Ok);
  EXPECT_EQ(last, transport.requests()[2].body->size());
}

}  // namespace
}  // namespace vtdirect_test
