#include "hosts/cli/failures/failure.h"

#include <gtest/gtest.h>

#include <set>

using VtDirectManager::FailureKind;

namespace vtdirect_cli {
namespace {

Reason ReasonOf(FailureKind kind, int httpStatus = 0) {
  Reason reason;
  reason.kind = kind;
  reason.httpStatus = httpStatus;
  return reason;
}

Failure FailureOf(ExitCode code, const Reason& reason) {
  return {code, "it failed", {}, reason};
}

std::string ClassWith(FailureKind kind, int httpStatus, ExitCode code = ExitCode::Failure) {
  return ClassOf(FailureOf(code, ReasonOf(kind, httpStatus)));
}

}  // namespace

TEST(FailureClasses, AreTheNamesOfExitStatusesWithoutAReason) {
  EXPECT_STREQ(ClassOf({ExitCode::Usage, "wrong"}), "usage");
  EXPECT_STREQ(ClassOf({ExitCode::NotFound, "not there"}), "not-found");
  EXPECT_STREQ(ClassOf({ExitCode::Failure, "failed"}), "failure");
}

TEST(FailureClasses, FollowFromTheAnswerOfTheServer) {
  EXPECT_EQ(ClassWith(FailureKind::Conflict, 423), "locked");
  EXPECT_EQ(ClassWith(FailureKind::Conflict, 409), "conflict");
  EXPECT_EQ(ClassWith(FailureKind::Conflict, 412), "conflict");
  EXPECT_EQ(ClassWith(FailureKind::Refused, 403), "refused");
  EXPECT_EQ(ClassWith(FailureKind::TooLarge, 413), "refused");
  EXPECT_EQ(ClassWith(FailureKind::Refused, 500), "unavailable");
  EXPECT_EQ(ClassWith(FailureKind::Refused, 503), "unavailable");
  EXPECT_EQ(ClassWith(FailureKind::Refused, 429), "unavailable");
  EXPECT_EQ(ClassWith(FailureKind::TimedOut, 0), "unavailable");
  EXPECT_EQ(ClassWith(FailureKind::AnswerBroken, 200), "unavailable");
  EXPECT_EQ(ClassWith(FailureKind::NotFound, 404), "failure");
}

TEST(FailureClasses, TellAServerThatWasNotReachedFromOneThatCanNotAnswerNow) {
  EXPECT_EQ(ClassWith(FailureKind::Unreachable, 0, ExitCode::CannotConnect), "cannot-connect");
  EXPECT_EQ(ClassWith(FailureKind::Refused, 503, ExitCode::CannotConnect), "unavailable");
}

TEST(FailureClasses, TellARefusedObjectFromOneThatIsNotThere) {
  EXPECT_EQ(ClassWith(FailureKind::Refused, 403, ExitCode::NotFound), "refused");
  EXPECT_EQ(ClassWith(FailureKind::NotFound, 404, ExitCode::NotFound), "not-found");
}

TEST(FailureClasses, LeaveAnExitStatusThatTellsMore) {
  EXPECT_EQ(ClassWith(FailureKind::Refused, 503, ExitCode::DownloadFailed), "download-failed");
  EXPECT_EQ(ClassWith(FailureKind::Refused, 403, ExitCode::LocalFile), "local-file");
}

TEST(FailureClasses, AreSaidByWhoeverLookedBeforeAnythingWasSent) {
  Failure failure{ExitCode::Failure, "checked out by bob"};
  failure.failureClass = FailureClass::Locked;
  EXPECT_STREQ(ClassOf(failure), "locked");
  EXPECT_TRUE(IsRetryable(failure));
}

TEST(FailureClasses, HaveANameEachThatNoExitStatusHas) {
  std::set<std::string> names;
  for (const ExitCodeRow& row : ExitCodes()) names.insert(row.name);
  for (const FailureClassRow& row : FailureClasses()) EXPECT_TRUE(names.insert(row.name).second) << row.name;
}

// A change that may have been carried out is looked at before it is sent again, whatever the server answered.
TEST(LostAnswers, AreNeverRetryable) {
  for (const int status : {0, 200, 500, 503}) {
    Reason reason = ReasonOf(status == 0 ? FailureKind::TimedOut : FailureKind::Refused, status);
    reason.mayHaveHappened = true;
    EXPECT_STREQ(ClassOf(FailureOf(ExitCode::Failure, reason)), "lost-answer") << status;
    EXPECT_FALSE(IsRetryable(FailureOf(ExitCode::Failure, reason))) << status;
    EXPECT_FALSE(IsRetryable(FailureOf(ExitCode::CannotConnect, reason))) << status;
  }
}

// Whoever ended the command from outside has not waited for the answer.
TEST(LostAnswers, AreThoseOfAnEndedCommandToo) {
  Failure ended{ExitCode::Interrupted, "interrupted; whether it is checked in is not known"};
  EXPECT_EQ(MayHaveHappened(ended), std::nullopt);
  ended.changeIsOpen = false;
  EXPECT_EQ(MayHaveHappened(ended), false);
  ended.changeIsOpen = true;
  EXPECT_EQ(MayHaveHappened(ended), true);
  EXPECT_STREQ(ClassOf(ended), "interrupted");
  EXPECT_FALSE(IsRetryable(ended));
  ended.code = ExitCode::Failure;
  EXPECT_STREQ(ClassOf(ended), "lost-answer");
}

TEST(Failures, AreRetryableIfTheyMayGoAwayByThemselves) {
  EXPECT_TRUE(IsRetryable({ExitCode::CannotConnect, "no"}));
  EXPECT_TRUE(IsRetryable({ExitCode::DownloadFailed, "no"}));
  EXPECT_TRUE(IsRetryable(FailureOf(ExitCode::DownloadFailed, ReasonOf(FailureKind::AnswerBroken))));
  EXPECT_FALSE(IsRetryable(FailureOf(ExitCode::DownloadFailed, ReasonOf(FailureKind::NotFound, 404))));
  EXPECT_FALSE(IsRetryable({ExitCode::Incomplete, "stored, and elsewhere than asked"}));
  EXPECT_TRUE(IsRetryable(FailureOf(ExitCode::Failure, ReasonOf(FailureKind::Refused, 503))));
  EXPECT_TRUE(IsRetryable(FailureOf(ExitCode::Failure, ReasonOf(FailureKind::Conflict, 423))));
  EXPECT_FALSE(IsRetryable(FailureOf(ExitCode::Failure, ReasonOf(FailureKind::Conflict, 409))));
  EXPECT_FALSE(IsRetryable(FailureOf(ExitCode::Failure, ReasonOf(FailureKind::Refused, 403))));
  EXPECT_FALSE(IsRetryable({ExitCode::Usage, "no"}));
  EXPECT_FALSE(IsRetryable({ExitCode::NotFound, "no"}));
  EXPECT_FALSE(IsRetryable({ExitCode::Interrupted, "no"}));
}

TEST(Failures, AreShownWithTheirAdvice) {
  EXPECT_EQ((Failure{ExitCode::Failure, "it failed"}).Text(), "it failed");
  EXPECT_EQ((Failure{ExitCode::Failure, "it failed", "try again"}).Text(), "it failed; try again");
}

}  // namespace vtdirect_cli
