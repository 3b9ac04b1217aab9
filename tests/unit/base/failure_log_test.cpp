#include "base/failure_log.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "base/failure_step.h"

namespace {

using namespace lxservices::cms_interface;

std::vector<std::string> StepsOf(const FailureLog& log) {
  std::vector<std::string> steps;
  for (const Failure& failure : log.Entries()) steps.push_back(failure.step);
  return steps;
}

using Steps = std::vector<std::string>;

Failure FailureIn(std::string step) {
  Failure failure;
  failure.step = std::move(step);
  return failure;
}

TEST(FailureLog, KeepsTheFirstAndTheLastHalfOfTooManyEntries) {
  FailureLog log;
  for (int number = 0; number < 70; ++number) log.Add(FailureIn(std::to_string(number)));
  const auto entries = log.Entries();
  ASSERT_EQ(entries.size(), 64u);
  EXPECT_EQ(entries[0].step, "0");
  EXPECT_EQ(entries[31].step, "31");
  EXPECT_EQ(entries[32].step, "38");
  EXPECT_EQ(entries[63].step, "69");
  EXPECT_EQ(log.Dropped(), 6u);
  log.Clear();
  EXPECT_TRUE(log.Entries().empty());
  EXPECT_EQ(log.Dropped(), 0u);
}

TEST(FailureReport, ReachesEveryLogThatTheThreadHasEntered) {
  const auto outer = std::make_shared<FailureLog>();
  const auto inner = std::make_shared<FailureLog>();
  const FailureListener outerListener(outer);
  ReportFailure(FailureIn("one"));
  {
    const FailureListener innerListener(inner);
    ReportFailure(FailureIn("two"));
  }
  ReportFailure(FailureIn("three"));
  EXPECT_EQ(StepsOf(*outer), (Steps{"one", "two", "three"}));
  EXPECT_EQ(StepsOf(*inner), (Steps{"two"}));
}

TEST(FailureReport, DoesNotReachALogOfAnotherThread) {
  const auto log = std::make_shared<FailureLog>();
  const FailureListener listener(log);
  std::thread([] { ReportFailure(FailureIn("elsewhere")); }).join();
  EXPECT_TRUE(log->Entries().empty());
}

TEST(FailureReport, GoesOnAfterListenersThatWentOutOfOrder) {
  const auto first = std::make_shared<FailureLog>();
  const auto second = std::make_shared<FailureLog>();
  auto outer = std::make_unique<FailureListener>(first);
  const FailureListener inner(second);
  outer.reset();
  ReportFailure(FailureIn("one"));
  EXPECT_TRUE(first->Entries().empty());
  EXPECT_EQ(StepsOf(*second), (Steps{"one"}));
}

TEST(FailureReport, IsDroppedForALogThatIsGone) {
  auto log = std::make_shared<FailureLog>();
  const FailureListener listener(log);
  log.reset();
  ReportFailure(FailureIn("one"));
  EXPECT_TRUE(FailuresAreCollected());
}

TEST(FailureListeners, EnterTheLogsOfAnotherThreadAndLeaveThemAgain) {
  const auto log = std::make_shared<FailureLog>();
  const FailureListener listener(log);
  const FailureLogs logs = CurrentFailureLogs();
  std::thread([&] {
    {
      const FailureListeners entered(logs);
      ReportFailure(FailureIn("inside"));
    }
    EXPECT_FALSE(FailuresAreCollected());
  }).join();
  EXPECT_EQ(StepsOf(*log), (Steps{"inside"}));
}

TEST(FailureListeners, EnterALogOnceThatTheThreadHasEnteredAlready) {
  const auto log = std::make_shared<FailureLog>();
  const FailureListener listener(log);
  const FailureListeners entered(CurrentFailureLogs());
  ReportFailure(FailureIn("one"));
  EXPECT_EQ(StepsOf(*log), (Steps{"one"}));
}

TEST(FailureStep, NamesWhatRunsForReportsWithoutAStepOfTheirOwn) {
  const auto log = std::make_shared<FailureLog>();
  const FailureListener listener(log);
  const FailureStep checkOut("check out");
  {
    const FailureStep nonce("fetch the nonce");
    ReportFailure({});
  }
  ReportFailure({});
  ReportFailure(FailureIn("own"));
  EXPECT_EQ(StepsOf(*log), (Steps{"fetch the nonce", "check out", "own"}));
}

TEST(FailureStep, IsNotKeptWhenNobodyCollects) {
  const FailureStep step("check out");
  const auto log = std::make_shared<FailureLog>();
  const FailureListener listener(log);
  ReportFailure({});
  EXPECT_EQ(StepsOf(*log), (Steps{""}));
}

TEST(FailureMark, TellsWhatFollowsFromAReportSince) {
  const auto log = std::make_shared<FailureLog>();
  const FailureListener listener(log);
  const FailureMark before;
  Failure failure;
  failure.kind = FailureKind::TimedOut;
  ReportFailure(failure);
  const FailureMark after;
  EXPECT_TRUE(before.ReportedSince());
  EXPECT_EQ(FollowsOr(before, FailureKind::NotFound).kind, FailureKind::TimedOut);
  EXPECT_TRUE(FollowsOr(before, FailureKind::NotFound).follows);
  EXPECT_FALSE(after.ReportedSince());
  EXPECT_EQ(FollowsOr(after, FailureKind::NotFound).kind, FailureKind::NotFound);
  EXPECT_FALSE(FollowsOr(after, FailureKind::NotFound).follows);
}

}  // namespace
