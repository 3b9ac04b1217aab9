#include "public/outcome.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <type_traits>

#include "base/failure_log.h"

namespace {

using VtDirectManager::FailureKind;
using VtDirectManager::FailureKindText;
using VtDirectManager::Outcome;
namespace inside = lxservices::cms_interface;

void Report(inside::FailureKind kind, const char* step, bool follows = false) {
  inside::Failure failure;
  failure.kind = kind;
  failure.step = step;
  failure.follows = follows;
  inside::ReportFailure(failure);
}

static_assert(!std::is_copy_constructible_v<Outcome> && !std::is_move_constructible_v<Outcome>);

TEST(Outcome, IsEmptyAtFirst) {
  const Outcome outcome;
  EXPECT_TRUE(outcome.Empty());
  EXPECT_TRUE(outcome.Entries().empty());
  EXPECT_FALSE(outcome.Cause().has_value());
  EXPECT_FALSE(outcome.MayHaveHappened());
  EXPECT_EQ(outcome.Dropped(), 0u);
}

TEST(Outcome, GivesEveryMemberOfAnEntry) {
  const Outcome outcome;
  inside::ReportFailure(
      {inside::FailureKind::Conflict, "check out", 409, 7, "taken", "https://h/x", true, true, false, 0, {}});
  const auto entries = outcome.Entries();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].kind, FailureKind::Conflict);
  EXPECT_EQ(entries[0].step, "check out");
  EXPECT_EQ(entries[0].httpStatus, 409);
  EXPECT_EQ(entries[0].platformError, 7);
  EXPECT_EQ(entries[0].serverText, "taken");
  EXPECT_EQ(entries[0].url, "https://h/x");
  EXPECT_TRUE(entries[0].mayHaveHappened);
  EXPECT_TRUE(entries[0].follows);
  EXPECT_TRUE(outcome.MayHaveHappened());
}

TEST(Outcome, TellsTheNewestCauseAndNotWhatFollowsFromIt) {
  Outcome outcome;
  Report(inside::FailureKind::Refused, "fetch the nonce");
  Report(inside::FailureKind::TimedOut, "check out");
  Report(inside::FailureKind::TimedOut, "check out the document", true);
  ASSERT_TRUE(outcome.Cause().has_value());
  EXPECT_EQ(outcome.Cause()->step, "check out");
  outcome.Clear();
  EXPECT_TRUE(outcome.Empty());
}

TEST(Outcome, OfAnInnerBlockDoesNotHideWhatHappensFromTheOuterOne) {
  const Outcome outer;
  {
    const Outcome inner;
    Report(inside::FailureKind::Refused, "one");
    EXPECT_EQ(inner.Entries().size(), 1u);
  }
  Report(inside::FailureKind::Refused, "two");
  EXPECT_EQ(outer.Entries().size(), 2u);
}

TEST(Outcome, MayBeReadWhileAnotherThreadReportsToIt) {
  const Outcome outcome;
  std::atomic<bool> done = false;
  std::thread task([&, logs = inside::CurrentFailureLogs()] {
    const inside::FailureListeners entered(logs);
    for (int count = 0; count < 200; ++count) Report(inside::FailureKind::Refused, "task");
    done = true;
  });
  while (!done) (void)outcome.Entries();
  task.join();
  EXPECT_EQ(outcome.Entries().size() + outcome.Dropped(), 200u);
}

TEST(Outcome, MayBeDestroyedWhileAnotherThreadReportsToIt) {
  std::atomic<bool> gone = false;
  std::thread task;
  {
    const Outcome outcome;
    task = std::thread([&, logs = inside::CurrentFailureLogs()] {
      const inside::FailureListeners entered(logs);
      while (!gone) Report(inside::FailureKind::Refused, "task");
      Report(inside::FailureKind::Refused, "task");
    });
  }
  gone = true;
  task.join();
}

TEST(FailureKinds, HaveWords) {
  EXPECT_STREQ(FailureKindText(FailureKind::NotFound), "not found");
  EXPECT_STREQ(FailureKindText(FailureKind::CredentialsWanted), "credentials wanted");
  EXPECT_STREQ(FailureKindText(FailureKind::Cancelled), "cancelled");
  EXPECT_STREQ(FailureKindText(static_cast<FailureKind>(99)), "unknown");
}

}  // namespace
