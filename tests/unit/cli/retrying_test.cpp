#include "hosts/cli/failures/retrying.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {
namespace {

using std::chrono::milliseconds;
using VtDirectManager::FailureKind;

[[nodiscard]] Failure FailureOf(FailureKind kind, int httpStatus) {
  Failure failure{ExitCode::CannotConnect, "no"};
  failure.reason = Reason{};
  failure.reason->kind = kind;
  failure.reason->httpStatus = httpStatus;
  return failure;
}

[[nodiscard]] Result<unsigned> Read(const std::string& text) {
  Arguments arguments;
  arguments.Set("retries", {text});
  return ReadRetries(arguments);
}

}  // namespace

TEST(Retrying, RepeatsWhatBrokeOffAndWhatAServerWasTooBusyFor) {
  EXPECT_TRUE(MayBeAskedAgain(FailureOf(FailureKind::AnswerBroken, 0)));
  EXPECT_TRUE(MayBeAskedAgain(FailureOf(FailureKind::AnswerBroken, 200)));
  EXPECT_TRUE(MayBeAskedAgain(FailureOf(FailureKind::Refused, 503)));
  EXPECT_TRUE(MayBeAskedAgain(FailureOf(FailureKind::Refused, 429)));
}

TEST(Retrying, TakesEveryOtherAnswerAsItIs) {
  EXPECT_FALSE(MayBeAskedAgain(FailureOf(FailureKind::NotFound, 404)));
  EXPECT_FALSE(MayBeAskedAgain(FailureOf(FailureKind::Refused, 500)));
  EXPECT_FALSE(MayBeAskedAgain(FailureOf(FailureKind::Refused, 403)));
  EXPECT_FALSE(MayBeAskedAgain(FailureOf(FailureKind::CredentialsWanted, 401)));
  EXPECT_FALSE(MayBeAskedAgain(FailureOf(FailureKind::Unreachable, 0)));
  EXPECT_FALSE(MayBeAskedAgain(FailureOf(FailureKind::TimedOut, 0)));
  EXPECT_FALSE(MayBeAskedAgain({ExitCode::Failure, "without a reason"}));
}

TEST(Retrying, WaitsTwiceAsLongEachTimeButNotForEver) {
  EXPECT_EQ(PauseBefore(0), milliseconds(100));
  EXPECT_EQ(PauseBefore(1), milliseconds(200));
  EXPECT_EQ(PauseBefore(2), milliseconds(400));
  EXPECT_EQ(PauseBefore(7), milliseconds(10'000));
  EXPECT_EQ(PauseBefore(4'000'000'000U), milliseconds(10'000));
}

TEST(Retrying, EndsAfterAsManyTimesAsItIsTold) {
  const Failure broken = FailureOf(FailureKind::AnswerBroken, 0);
  EXPECT_FALSE(IsToBeRepeated(broken, 0, 0));
  EXPECT_TRUE(IsToBeRepeated(broken, 0, 1));
  EXPECT_FALSE(IsToBeRepeated(broken, 1, 1));
  EXPECT_FALSE(IsToBeRepeated(FailureOf(FailureKind::NotFound, 404), 0, 3));
}

TEST(Retrying, IsToldHowOftenByANumber) {
  EXPECT_EQ(*ReadRetries(Arguments()), 3U);
  EXPECT_EQ(*Read("0"), 0U);
  EXPECT_EQ(*Read("20"), 20U);
  for (const char* text : {"", "21", "-1", "3x", " 3"}) EXPECT_FALSE(Read(text)) << text;
}

TEST(Retrying, GivesABusyServerThePauseThatItAsksFor) {
  using std::chrono::seconds;
  const Failure busy = FailureOf(FailureKind::Refused, 503);
  EXPECT_EQ(PauseFor(busy, 0, std::nullopt), milliseconds(100));
  EXPECT_EQ(PauseFor(busy, 0, seconds(7)), milliseconds(7'000));
  EXPECT_EQ(PauseFor(FailureOf(FailureKind::Refused, 429), 0, seconds(60)), milliseconds(60'000));
  // A pause that is shorter than the usual one does not make the questions more.
  EXPECT_EQ(PauseFor(busy, 5, seconds(1)), milliseconds(3'200));
  // What broke off was not asked to wait.
  EXPECT_EQ(PauseFor(FailureOf(FailureKind::AnswerBroken, 200), 0, seconds(7)), milliseconds(100));
}

TEST(Retrying, EndsWhenAServerAsksForMoreThanAMinute) {
  EXPECT_FALSE(PauseFor(FailureOf(FailureKind::Refused, 503), 0, std::chrono::seconds(61)));
}

}  // namespace vtdirect_cli
