#include "public/outcome.h"
#include "tests/wire/public/uploads/upload_front_fixture.h"

// Reasons that no exchange gives, and whom they reach.
namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

class Reasons : public UploadFrontTest {
 protected:
  // The cause in words: kind, step, and what else there is.
  static std::string Cause(const Outcome& outcome) {
    const auto cause = outcome.Cause();
    if (!cause) return "none";
    std::string text = std::string(FailureKindText(cause->kind)) + ", " + cause->step;
    if (cause->httpStatus != 0) text += ", " + std::to_string(cause->httpStatus);
    if (cause->mayHaveHappened) text += ", may have happened";
    if (cause->aside) text += ", aside";
    return text;
  }
  bool StorePlain(const char* path) {
    return Upload(FileTypeGeneral, path, mainPath.c_str(), Status(), {}, nullptr, false);
  }
};

TEST_F(Reasons, OfAnAddressThatNoServerHasIsThatItIsNotFound) {
  const Outcome outcome;
  EXPECT_EQ(Checkout("//elsewhere/Products/a"), "");
  EXPECT_EQ(Cause(outcome), "not found, find the server");
  EXPECT_EQ(Checkout(nullptr), "");
  EXPECT_EQ(Cause(outcome), "not found, find the server");
}

TEST_F(Reasons, OfAServerThatASessionHasWrittenOffIsThatItIsUnreachable) {
  const auto session = StartSession();
  transport.Then(404).Then(404).Then(404).ThenFail(du::http::ErrorCode::NoConnection);
  std::string current;
  std::string latest;
  EXPECT_EQ(GetStatus(uidOfD1, current, latest, nullptr), -1);
  const Outcome outcome;
  EXPECT_EQ(GetStatus(uidOfD1, current, latest, nullptr), -1);
  EXPECT_EQ(Cause(outcome), "unreachable, find the server");
}

TEST_F(Reasons, OfAPathWhereAUidIsNeededIsThatItHasNoId) {
  const Outcome outcome;
  EXPECT_EQ(Checkin("//plm/Products/Bike/Folders/fork.lxz"), "");
  EXPECT_EQ(Cause(outcome), "not found, find the file");
  EXPECT_EQ(transport.lines(), Lines{});
}

TEST_F(Reasons, OfADocumentThatIsCheckedOutIsAConflictAndTheRestFollows) {
  transport.Then(200, R"({"id":"D1","pdmIterationState":{"isCheckout":true}})");
  const Outcome outcome;
  EXPECT_EQ(Checkout(uidOfD1), "");
  const auto entries = outcome.Entries();
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(Cause(outcome), "conflict, check out");
  EXPECT_TRUE(entries[1].follows);
  EXPECT_EQ(entries[1].kind, FailureKind::Conflict);
}

TEST_F(Reasons, OfACheckoutAreNotHiddenByTheCleanUpBehindIt) {
  transport.Then(200, R"({"id":"D1"})").Then(200, nonceAnswer).Then(200, R"({"id":"W7"})");
  transport.Then(403, "not yours").Then(500, "not now");
  const Outcome outcome;
  EXPECT_EQ(Checkout(uidOfD1), "");
  EXPECT_EQ(Cause(outcome), "refused, check out, 403");
  EXPECT_EQ(outcome.Cause()->serverText, "not yours");
  const auto entries = outcome.Entries();
  const auto left = std::find_if(entries.begin(), entries.end(), [](const Failure& entry) {
    return entry.step == "delete a workspace" && entry.httpStatus == 500;
  });
  ASSERT_NE(left, entries.end());
  EXPECT_TRUE(left->aside);
}

TEST_F(Reasons, OfACheckInWhoseAnswerIsLostIsThatItMayHaveHappened) {
  transport.Then(200, nonceAnswer).ThenFail(du::http::ErrorCode::TimedOut);
  const Outcome outcome;
  EXPECT_EQ(Checkin(temporaryUid.c_str()), "");
  EXPECT_EQ(Cause(outcome), "timed out, check in, may have happened");
  EXPECT_TRUE(outcome.MayHaveHappened());
}

TEST_F(Reasons, OfAnIncompleteTicketIsABrokenAnswer) {
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1"})").Then(200, nonceAnswer).Then(200, R"({"masterUrl":"x"})");
  const Outcome outcome;
  EXPECT_FALSE(StorePlain(uidOfD1));
  EXPECT_EQ(Cause(outcome), "answer broken, ask for a place to upload to, 200, may have happened");
}

TEST_F(Reasons, OfAFileThatIsLeftOutIsTold) {
  ThenPlainDocument();
  ThenIterate();
  const Outcome outcome;
  EXPECT_TRUE(Upload(FileTypeGeneral, uidOfD1, directory.File("local").c_str(), {}, {}, nullptr, false));
  EXPECT_EQ(Cause(outcome), "local file, upload the contents");
}

TEST_F(Reasons, OfAMissingLocalFileAreTold) {
  const Outcome outcome;
  EXPECT_FALSE(Upload(FileTypeGeneral, uidOfD1, nullptr, Status(), {}, nullptr, false));
  EXPECT_EQ(Cause(outcome), "local file, prepare the upload");
}

TEST_F(Reasons, OfANewDocumentDoNotSayThatItsNameWasFree) {
  ThenNewName();
  transport.Then(500, "no contexts");
  const Outcome outcome;
  EXPECT_FALSE(StorePlain("//plm/Products/Bike/Folders/new.fnl"));
  EXPECT_EQ(Cause(outcome), "refused, list the contexts, 500");
}

TEST_F(Reasons, OfAnUnsupportedServerAreTold) {
  transport.Then(200, "ServerMajorVersion:9\n");
  const Outcome outcome;
  EXPECT_FALSE(ServerSupported("https://old.example/", nullptr, nullptr));
  EXPECT_EQ(Cause(outcome), "unsupported server, check the server");
}

TEST_F(Reasons, OfADownloadOfAnotherLengthAreABrokenAnswer) {
  transport.Then(200, documentJson).Then(200, "byte");
  const Outcome outcome;
  std::string uid;
  EXPECT_FALSE(GetFile(uidOfD1, directory.File("local/copy").c_str(), uid, DownloadOptions{{}, {}, true}));
  EXPECT_EQ(Cause(outcome), "answer broken, download the content");
}

TEST_F(Reasons, AreNotCollectedTwiceByATaskThatRunsAtOnce) {
  ThenSchema();
  transport.Then(404);
  const Outcome outcome;
  EXPECT_TRUE(GetFileAsync(uidOfD1, mainPath.c_str(), {}, {}));
  const auto entries = outcome.Entries();
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0].httpStatus, 404);
  EXPECT_TRUE(entries[1].follows);
  EXPECT_TRUE(entries[2].follows);
}

std::function<void()> posted;

TEST_F(Reasons, OfATaskReachTheObjectThatWasThereWhenItWasPosted) {
  RegisterTaskRunner([](std::function<void()> task) {
    posted = std::move(task);
    return true;
  });
  ThenSchema();
  transport.Then(404);
  const Outcome outcome;
  EXPECT_TRUE(GetFileAsync(uidOfD1, mainPath.c_str(), {}, {}));
  EXPECT_TRUE(outcome.Empty());
  std::thread([] { posted(); }).join();
  EXPECT_EQ(Cause(outcome), "not found, read the document, 404");
}

TEST_F(Reasons, OfATaskGoNowhereWhenThatObjectIsGone) {
  RegisterTaskRunner([](std::function<void()> task) {
    posted = std::move(task);
    return true;
  });
  ThenSchema();
  transport.Then(404);
  {
    const Outcome outcome;
    EXPECT_TRUE(GetFileAsync(uidOfD1, mainPath.c_str(), Status(), {}));
  }
  const Outcome later;
  posted();
  EXPECT_EQ(statuses, Lines{"10 (null)"});
  // The thread that runs the task has an object of its own.
  EXPECT_EQ(Cause(later), "not found, read the document, 404");
}

TEST_F(Reasons, OfATaskThatNobodyTakesAreTold) {
  RegisterTaskRunner([](std::function<void()>) { return false; });
  ThenSchema();
  const Outcome outcome;
  EXPECT_FALSE(GetFileAsync(uidOfD1, mainPath.c_str(), {}, {}));
  EXPECT_EQ(Cause(outcome), "refused, hand the task over");
}

TEST_F(Reasons, HoldWhatThePlatformFoundBehindAFailure) {
  Answer answer{0, {}, du::http::ErrorCode::TlsFailure};
  answer.found = {du::http::FailureDetail::CertificateExpired, "It expired\x1b[2J" + std::string(2000, 'x')};
  transport.Then(answer);
  const Outcome outcome;
  EXPECT_FALSE(FileExists(uidOfD1));
  ASSERT_TRUE(outcome.Cause());
  EXPECT_EQ(outcome.Cause()->kind, FailureKind::Unreachable);
  EXPECT_EQ(outcome.Cause()->platformDetail, 34);
  EXPECT_EQ(outcome.Cause()->platformText, "It expired [2J" + std::string(1024 - 14, 'x'));
}

TEST_F(Reasons, HoldNothingOfAPlatformThatExplainsNothing) {
  transport.ThenFail(du::http::ErrorCode::NoConnection);
  const Outcome outcome;
  EXPECT_FALSE(FileExists(uidOfD1));
  ASSERT_TRUE(outcome.Cause());
  EXPECT_EQ(outcome.Cause()->platformDetail, 0);
  EXPECT_EQ(outcome.Cause()->platformText, "");
}

TEST_F(Reasons, TellAServerThatIsNoneOfThisKind) {
  constexpr int foreignServer = 22;
  StatusCode code = StatusOk;
  transport.Then(404, "<html>").Then(200, "<html>\n<p>It works: well</p>\n").Then(503, "closed");
  Outcome outcome;
  EXPECT_FALSE(ServerSupported("http://shop.example/", &code, nullptr));
  EXPECT_EQ(code, StatusConnectFailed);
  EXPECT_EQ(outcome.Cause()->kind, FailureKind::NotFound);
  EXPECT_EQ(outcome.Cause()->platformDetail, foreignServer);
  EXPECT_EQ(outcome.Cause()->platformText, "What answers there is not a Vantry server");
  outcome.Clear();
  EXPECT_FALSE(ServerSupported("http://shop.example/", &code, nullptr));
  EXPECT_EQ(code, StatusServerUnsupported);
  EXPECT_EQ(outcome.Cause()->kind, FailureKind::UnsupportedServer);
  EXPECT_EQ(outcome.Cause()->platformDetail, foreignServer);
  outcome.Clear();
  // It may be one that is not ready to work.
  EXPECT_FALSE(ServerSupported("http://shop.example/", &code, nullptr));
  EXPECT_EQ(outcome.Cause()->platformDetail, 0);
}

TEST_F(Reasons, ReachTheHostOfACallFromInsideACallbackAndTheOneAround) {
  transport.Then(200, documentJson).Then(200, "bytes").Then(404);
  const Outcome outer;
  std::string uid;
  int inner = 0;
  const auto ask = [&](std::size_t, std::size_t) {
    const Outcome outcome;
    if (inner == 0 && !FileExists(uidOfD1)) inner = static_cast<int>(outcome.Entries().size());
    return true;
  };
  (void)GetFile(uidOfD1, directory.File("local/copy").c_str(), uid, {}, ask);
  EXPECT_GT(inner, 0);
  EXPECT_FALSE(outer.Empty());
}

}  // namespace
}  // namespace vtdirect_test
