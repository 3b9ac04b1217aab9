#include "server/upload_target.h"

#include <stdlib.h>

#include "base/result.h"
#include "tests/wire/documents/storing/storing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

constexpr const char* gadgetContext =
    R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})";
const std::string contextsLine = Get("servlet/rest/v1/contexts?type=Product");
const std::string workspacesLine = Get(workspacesPath + "?contextId=OR%3Avn.Product%3A5");

std::string FolderRows(const std::string& id, const std::string& name) {
  return R"({"items":[{"id":")" + id + R"(","attributes":{"name":")" + name + R"("}}]})";
}

class UploadTarget : public StoringTest {
 protected:
  UploadTarget() { setenv("FENLOOM_LANGUAGE", "en", 1); }

  Status Upload(const char* path) {
    return HandOver(UploadNewDocument(Begin(connection, services), path, params, {}), info);
  }
  void ThenStore() {
    ThenNonce();
    transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedAnswer);
  }
  // Where the last request asked for the document to be put: what is after its last member's name.
  [[nodiscard]] std::string EndOfBody(const std::string& from) const {
    const std::string body = transport.requests().back().body.value_or("");
    const auto begin = body.find(from);
    return begin != std::string::npos ? body.substr(begin) : "no " + from + " in " + body;
  }

  ServiceFlags services;
};

TEST_F(UploadTarget, InAFolderOfAnOlderServerIsWalkedToByRest) {
  transport.Then(200, gadgetContext).Then(200, FolderRows("F1", "Sub")).Then(200, FolderRows("F2", "Deep"));
  ThenStore();
  EXPECT_EQ(Upload("Products/Gadget/Folders/Sub/Deep/pump.fnl"), Ok);
  EXPECT_EQ(transport.lines(),
            (Lines{contextsLine, Get("servlet/rest/v1/contexts/OR%3Avn.Product%3A5/folders"),
                   Get("servlet/rest/v1/folders/F1/folders"), Get(noncePath), Post(factoryPath), uploadLine,
                   Post(documentsPath)}));
  EXPECT_EQ(EndOfBody(R"("targetFolderId")"), R"("targetFolderId":"F2"}],"contextId":"OR:vn.Product:5"})");
  EXPECT_NE(EndOfBody("").find(R"("cadName":"pump.fnl")"), std::string::npos);
  EXPECT_EQ(info.id, "D1002");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(UploadTarget, OnAnOlderServerIsTheDeepestFolderThatExists) {
  transport.Then(200, gadgetContext).Then(200, FolderRows("F1", "Sub")).Then(200, FolderRows("F2", "Deep"));
  ThenStore();
  EXPECT_EQ(Upload("Products/Gadget/Folders/Sub/Nowhere/pump.fnl"), Ok);
  EXPECT_EQ(EndOfBody(R"("targetFolderId")"), R"("targetFolderId":"F1"}],"contextId":"OR:vn.Product:5"})");
}

TEST_F(UploadTarget, InAFolderIsLookedUpByODataWhereThereIsOne) {
  services.dataAdminPresent = true;
  transport.Then(200, gadgetContext)
      .Then(200, R"({"value":[{"ID":"R1","Name":"Default","Folders":[{"ID":"F1","Name":"Sub"}]}]})");
  ThenStore();
  EXPECT_EQ(Upload("Products/Gadget/Folders/Sub/pump.fnl"), Ok);
  EXPECT_EQ(transport.lines()[1],
            Get("servlet/odata/v1/DataAdmin/Containers('OR:vn.Product:5')/Folders?$expand=Folders($levels=1;"
                "$select=ID,Name)&$select=ID,Name"));
  EXPECT_EQ(EndOfBody(R"("targetFolderId")"), R"("targetFolderId":"F1"}],"contextId":"OR:vn.Product:5"})");
}

TEST_F(UploadTarget, OnANewServerLiesInAContainer) {
  services.dataAdminPresent = true;
  services.dataAdminV5 = true;
  transport.Then(200, R"({"value":[{"ID":"C5"}]})").Then(200, R"({"value":[]})");
  ThenStore();
  EXPECT_EQ(Upload("Libraries/Gadget/Folders/Sub/pump.fnl"), Ok);
  EXPECT_EQ(transport.lines()[0],
            Get("servlet/odata/v5/DataAdmin/Containers/ZVK.DataAdmin.LibraryContainer?$select=ID&$filter="
                "Name%20eq%20%27Gadget%27"));
}

// The server decides where a document without a folder goes.
TEST_F(UploadTarget, InAFolderThatIsNotFoundGoesOnWithoutOne) {
  services.dataAdminPresent = true;
  transport.Then(200, gadgetContext).Then(500);
  ThenStore();
  EXPECT_EQ(Upload("Products/Gadget/Folders/Sub/pump.fnl"), Ok);
  EXPECT_TRUE(EndOfBody(R"("isDerived")").starts_with(R"("isDerived":false}}],"contextId")"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(UploadTarget, AtTheTopOfTheFoldersAsksForNoFolder) {
  transport.Then(200, gadgetContext);
  ThenStore();
  EXPECT_EQ(Upload("Products/Gadget/Folders/pump.fnl"), Ok);
  EXPECT_EQ(transport.lines(),
            (Lines{contextsLine, Get(noncePath), Post(factoryPath), uploadLine, Post(documentsPath)}));
}

// A path that ends with its section names no document: what the server makes of that is its affair.
TEST_F(UploadTarget, MayBeASectionAlone) {
  transport.Then(200, gadgetContext);
  ThenStore();
  EXPECT_EQ(Upload("Products/Gadget/Folders"), Ok);
  EXPECT_NE(EndOfBody("").find(R"("cadName":"")"), std::string::npos) << EndOfBody("");
  EXPECT_EQ(EndOfBody("").find("targetFolderId"), std::string::npos);
  transport.Then(200, gadgetContext).Then(200, R"([{"id":"W1","name":"x"}])");
  EXPECT_EQ(Upload("Products/Gadget/Workspaces"), Refused);
  EXPECT_EQ(trace.lines(),
            Traces{Error("Failed to locate workspace  in context OR:vn.Product:5 on server\n")});
}

TEST_F(UploadTarget, LosesTheVersionInThePath) {
  transport.Then(200, gadgetContext);
  ThenStore();
  EXPECT_EQ(Upload("Products/Gadget/Folders/pump.fnl|A.1"), Ok);
  EXPECT_NE(EndOfBody("").find(R"("cadName":"pump.fnl")"), std::string::npos);
}

TEST_F(UploadTarget, NamesTheDocumentAsItStandsInThePath) {
  transport.Then(200, gadgetContext);
  ThenStore();
  EXPECT_EQ(Upload("Products/Gadget/Folders/a%7cb Größe.fnl"), Ok);
  EXPECT_NE(EndOfBody("").find(R"("cadName":"a%7cb Größe.fnl")"), std::string::npos) << EndOfBody("");
}

TEST_F(UploadTarget, InAWorkspaceIsStoredThere) {
  transport.Then(200, gadgetContext).Then(200, R"([{"id":"W1","name":"x"},{"id":"W12","name":"mine"}])");
  ThenStore();
  EXPECT_EQ(Upload("Products/Gadget/Workspaces/mine/pump.fnl"), Ok);
  EXPECT_EQ(transport.lines(), (Lines{contextsLine, workspacesLine, Get(noncePath), Post(factoryPath),
                                      uploadLine, Post(workspacesPath + "/W12/store")}));
  EXPECT_TRUE(EndOfBody(R"("isDerived")") == R"("isDerived":false}}]})") << EndOfBody("");
  EXPECT_EQ(info.id, "D1002|W12");
}

TEST_F(UploadTarget, MayBeATemporaryWorkspace) {
  transport.Then(200, gadgetContext).Then(200, R"([{"id":"W3","name":"FenloomTMP00000000"}])");
  ThenStore();
  EXPECT_EQ(Upload("Products/Gadget/Workspaces/FenloomTMP00000000/pump.fnl"), Ok);
  EXPECT_EQ(info.id, "D1002|W3");
}

TEST_F(UploadTarget, InAnUnknownWorkspaceIsRefused) {
  transport.Then(200, gadgetContext)
      .Then(200, R"([{"id":"W1","name":"x"}])")
      .Then(200, gadgetContext)
      .Then(500);
  EXPECT_EQ(Upload("Products/Gadget/Workspaces/mine/pump.fnl"), Refused);
  EXPECT_EQ(Upload("Products/Gadget/Workspaces/pump.fnl"), Refused);
  EXPECT_EQ(trace.lines(),
            (Traces{Error("Failed to locate workspace mine in context OR:vn.Product:5 on server\n"),
                    Error("Failed to locate workspace  in context OR:vn.Product:5 on server\n")}));
}

TEST_F(UploadTarget, InAnUnknownContextIsRefused) {
  transport.Then(200, R"({"items":[]})").Then(500);
  EXPECT_EQ(Upload("Products/Gadget/Folders/Sub/pump.fnl"), Refused);
  EXPECT_EQ(Upload("Products/Gadget/Nowhere/Sub/pump.fnl"), Refused);
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to locate context Gadget on server\n"),
                                   Error("Failed to locate context Gadget on server\n")}));
  EXPECT_EQ(info.id, "before");
}

TEST_F(UploadTarget, InNeitherSectionIsNotFound) {
  for (int times = 0; times < 3; ++times) transport.Then(200, gadgetContext);
  EXPECT_EQ(Upload("Products/Gadget/Nowhere/x/name"), NotFound);
  EXPECT_EQ(Upload("Products/Gadget/name"), NotFound);
  EXPECT_EQ(Upload("Products/Gadget/"), NotFound);
  EXPECT_EQ(
      trace.lines(),
      (Traces{Error("A target folder most be specified (where Products/Gadget/Nowhere/x/name was given)\n"),
              Error("A target folder most be specified (where Products/Gadget/name was given)\n"),
              Error("A target folder most be specified (where Products/Gadget/ was given)\n")}));
  EXPECT_EQ(transport.lines(), (Lines{contextsLine, contextsLine, contextsLine}));
}

TEST_F(UploadTarget, BelowAnUnknownRootIsSoughtAmongAllContexts) {
  transport.Then(200, gadgetContext);
  EXPECT_EQ(Upload("Elsewhere/Gadget/x/name"), NotFound);
  EXPECT_EQ(transport.lines(), Lines{Get("servlet/rest/v1/contexts")});
}

}  // namespace
}  // namespace vtdirect_test
