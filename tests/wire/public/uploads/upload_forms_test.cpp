#include <stdexcept>

#include "tests/wire/public/uploads/upload_walk.h"

// What holds for each of the exported uploads alike.
namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::IsEmpty;

const std::string newPath = "//plm/Products/Gadget/Folders/a.fnl";
const Answer tooLarge{413, "", du::http::ErrorCode::TooLarge};

class EveryUpload : public UploadFormTest {
 protected:
  void ThenReadToIterate() {
    ThenPlainDocument();
    transport.Then(200, R"({"id":"D1"})");
  }
};

INSTANTIATE_TEST_SUITE_P(Of, EveryUpload, testing::ValuesIn(AllUploadForms()), NameOfForm);

// Unasked, some entries end the checkout themselves, and the others leave it as it is.
TEST_P(EveryUpload, ToATemporaryCheckoutChecksInByItselfOrNotAtAll) {
  ThenSchema();
  transport.Then(200, R"({"id":"D1001"})").Then(200, R"({"id":"D1002"})");
  ThenNonce();
  transport.Then(200, Ticket(Files())).Then(200, Receipts(Files())).Then(200, "[]");
  if (GetParam().ChecksInByItself()) {
    transport.Then(200, storedDocument).Then(200);
    EXPECT_EQ(Run(temporaryUid, false), Done(storedUid));
    EXPECT_EQ(transport.lines().back(), Post(workspacesPath + "/W77/delete"));
  } else {
    transport.Then(200, R"({"id":"D1001","epmMaster":{"cadName":"pump.fnl"}})");
    EXPECT_EQ(Run(temporaryUid, false), Done(temporaryUid + "&file=/pump.fnl"));
    EXPECT_EQ(transport.lines().back(), DocumentLine("D1001"));
  }
}

TEST_P(EveryUpload, AboveTheServersLimitTellsSoAtACreation) {
  ThenNewName();
  transport.Then(200, R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})");
  ThenNonce();
  transport.Then(200, Ticket(Files())).Then(tooLarge);
  EXPECT_EQ(Run(newPath, false), Failed(11));
  EXPECT_THAT(trace.lines(),
              testing::Contains(Error("Failed to update document: maximum file size exceeded\n")));
}

TEST_P(EveryUpload, AboveTheServersLimitTellsSoAtAnIteration) {
  ThenReadToIterate();
  ThenNonce();
  transport.Then(200, Ticket(Files())).Then(tooLarge);
  EXPECT_EQ(Run(uidOfD1, false), Failed(11));
  EXPECT_EQ(Traced(), (Traces{StoringAt(""), Error("Failed to update document: maximum file size exceeded\n"),
                              Error("Failed to iterate document id D1 " + ThreePaths() + "\n")}));
}

TEST_P(EveryUpload, AboveTheServersLimitTellsSoAtAStore) {
  ThenSchema();
  transport.Then(200, R"({"id":"D1001"})").Then(200, R"({"id":"D1002"})");
  ThenNonce();
  transport.Then(200, Ticket(Files())).Then(tooLarge);
  EXPECT_EQ(Run(temporaryUid, true), Failed(11));
  EXPECT_EQ(transport.lines().back(), uploadLine);
}

TEST_P(EveryUpload, WithoutAPlaceForItsBodyFailsLikeAnyTransfer) {
  ThenPlainDocument();
  const std::string gone = directory.File("local/gone");
  std::filesystem::create_directory(gone);
  // Its place for temporary files goes when the document has been read.
  transport.Then({.status = 200, .body = R"({"id":"D1"})", .afterwards = [&] {
                    setenv("TMPDIR", gone.c_str(), 1);
                    std::filesystem::remove(gone);
                  }});
  EXPECT_EQ(Run(uidOfD1, false), Failed(8));
  EXPECT_EQ(transport.lines().back(), DocumentLine("D1"));
  EXPECT_EQ(Traced(),
            (Traces{StoringAt(""), Error("Failed to iterate document id D1 " + ThreePaths() + "\n")}));
}

TEST_P(EveryUpload, ToAnAddressWithoutAServerIsTracedAndNotTold) {
  EXPECT_EQ(Run("//nowhere/Products/a", false), NotPrepared(""));
  EXPECT_EQ(Run("korvufenloom-vt://nowhere/?id=D1", false), NotPrepared(""));
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_EQ(trace.lines(),
            (Traces{Error("Failed to connect to server path //nowhere/Products/a\n"),
                    Error("Failed to connect to server path korvufenloom-vt://nowhere/?id=D1\n")}));
}

TEST_P(EveryUpload, ToAPathThatHasADocumentIsTracedAndNotTold) {
  ThenSchema();
  transport.Then(404).Then(404).Then(404);
  transport.Then(200, R"([{"id":"D1","attributes":{"number":"0042"}}])")
      .Then(200, R"({"id":"D1"})")
      .Then(200, R"({"id":"D1"})");
  EXPECT_EQ(Run(newPath, false), NotPrepared(""));
  EXPECT_EQ(Traced(), Traces{Error("File " + newPath + " already exists\n")});
  EXPECT_FALSE(ShouldInvalidateCache(false));
}

// The entries that transfer in the call have nothing to ask of the runner.
TEST_P(EveryUpload, ThatTheRunnerRefusesIsNeitherTracedNorTold) {
  RegisterTaskRunner([](std::function<void()>) { return false; });
  ThenPlainDocument();
  if (GetParam().IsLater()) {
    EXPECT_EQ(Run(uidOfD1, false), NotPrepared(""));
    EXPECT_THAT(trace.lines(), IsEmpty());
    EXPECT_FALSE(ShouldInvalidateCache(false));
    return;
  }
  transport.Then(200, R"({"id":"D1"})");
  ThenNonce();
  transport.Then(200, Ticket(Files())).Then(200, Receipts(Files())).Then(200, storedDocument);
  EXPECT_EQ(Run(uidOfD1, false), Done(storedUid));
}

// The exception comes out where the transfer runs: of the entry, or of the task.
TEST_P(EveryUpload, WithATicketOfNoNumbersRaisesAndLeavesNothing) {
  ThenReadToIterate();
  ThenNonce();
  transport.Then(200, R"({"masterUrl":"m","uploadUrl":"https://files.example/u",
                          "fileNames":["a","b","c"],"streamIds":["x1","x2","x3"]})");
  EXPECT_THROW((void)Run(uidOfD1, false), std::invalid_argument);
  EXPECT_EQ(transport.lines().back(), Post(factoryPath));
  EXPECT_THAT(statuses, IsEmpty());
  EXPECT_EQ(directory.Entries(), Lines{"local"});
  EXPECT_FALSE(ShouldInvalidateCache(false));
  // The server can be used as before, and has its nonce.
  ThenReadToIterate();
  transport.Then(200, Ticket(Files())).Then(200, Receipts(Files())).Then(200, storedDocument);
  EXPECT_EQ(Run(uidOfD1, false), Done(storedUid));
}

using LinkedUpload = UploadFrontTest;

TEST_F(LinkedUpload, ToADocumentOfAnotherServerGoesOnWithoutTheLink) {
  UpdateServerList({{"plm", plmUrl}, {"other", "https://other.example/"}});
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})");
  ThenNonce();
  ThenUpload();
  transport.Then(200, storedDocument);
  const std::map<std::string, std::string> links{{"bolt", "korvufenloom-vt://other.example/?id=D7"}};
  EXPECT_TRUE(Upload(uidOfD1, mainPath.c_str(), "", links, Status(), {}, nullptr, false));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
  EXPECT_EQ(trace.lines()[0],
            Warning("Links to different servers are unsupported: link to bolt will be broken\n"));
  EXPECT_NE(transport.requests().back().body->find(R"("isDerived":false)"), std::string::npos);
}

}  // namespace
}  // namespace vtdirect_test
