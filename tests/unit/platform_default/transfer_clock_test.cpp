#include "platform_default/transfer_clock.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using vtdirect::platform::TransferClock;

using std::chrono::milliseconds;
using std::chrono::seconds;

/// A clock with the limits 10 (stall), 100 (first byte) and 1000 (first byte after a body), at the time zero.
class TransferClockTest : public testing::Test {
 protected:
  TransferClockTest() { clock_.Reset({10, 100, 1000}); }
  static TransferClock::Time At(int second) { return TransferClock::Time(seconds(second)); }
  TransferClock clock_;
};

TEST_F(TransferClockTest, LeavesTheTimeToConnectAlone) {
  EXPECT_FALSE(clock_.HasRunOut(At(1'000'000), 0, 0));
}

TEST_F(TransferClockTest, WaitsForTheFirstByteOfAnAnswer) {
  clock_.RequestStarts(At(5));
  EXPECT_FALSE(clock_.HasRunOut(At(105) - milliseconds(1), 0, 0));
  EXPECT_TRUE(clock_.HasRunOut(At(105), 0, 0));
}

TEST_F(TransferClockTest, CountsAStallWhileABodyGoesOut) {
  clock_.RequestStarts(At(0));
  clock_.BodyBegins();
  EXPECT_FALSE(clock_.HasRunOut(At(9), 0, 500));
  EXPECT_FALSE(clock_.HasRunOut(At(18), 0, 500));
  EXPECT_TRUE(clock_.HasRunOut(At(19), 0, 500));
}

TEST_F(TransferClockTest, GivesAServerLongerOnceTheBodyIsOut) {
  clock_.RequestStarts(At(0));
  clock_.BodyBegins();
  EXPECT_FALSE(clock_.HasRunOut(At(4), 0, 1000));
  clock_.BodyIsOut();
  EXPECT_FALSE(clock_.HasRunOut(At(1003), 0, 1000));
  EXPECT_TRUE(clock_.HasRunOut(At(1004), 0, 1000));
}

TEST_F(TransferClockTest, CountsAStallOnceTheAnswerHasBegun) {
  clock_.RequestStarts(At(0));
  clock_.AnswerArrives(At(90));
  EXPECT_FALSE(clock_.HasRunOut(At(99), 0, 0));
  EXPECT_TRUE(clock_.HasRunOut(At(100), 0, 0));
  EXPECT_FALSE(clock_.HasRunOut(At(100), 7, 0));
  EXPECT_FALSE(clock_.HasRunOut(At(109), 7, 0));
  EXPECT_TRUE(clock_.HasRunOut(At(110), 7, 0));
}

TEST_F(TransferClockTest, TakesAnInterimAnswerForASignOfLife) {
  clock_.RequestStarts(At(0));
  clock_.AnswerArrives(At(90));
  clock_.AnswerWasInterim();
  EXPECT_FALSE(clock_.HasRunOut(At(189), 0, 0));
  EXPECT_TRUE(clock_.HasRunOut(At(190), 0, 0));
}

TEST_F(TransferClockTest, BeginsAnewWithEachRequestOfAnExchange) {
  clock_.RequestStarts(At(0));
  clock_.BodyBegins();
  clock_.BodyIsOut();
  clock_.AnswerArrives(At(1));
  // The answer demanded a password, and the request goes out once more.
  clock_.RequestStarts(At(50));
  EXPECT_FALSE(clock_.HasRunOut(At(149), 0, 0));
  EXPECT_TRUE(clock_.HasRunOut(At(150), 0, 0));
}

TEST_F(TransferClockTest, TakesAnyNumberOfSeconds) {
  const long most = std::numeric_limits<long>::max();
  // One second more than nanoseconds in 64 bits can count, and the largest of all.
  for (const long limit : {9'223'372'037L, most}) {
    clock_.Reset({limit, limit, limit});
    clock_.RequestStarts(At(0));
    EXPECT_FALSE(clock_.HasRunOut(At(1'000'000'000), 0, 0));
    clock_.AnswerArrives(At(1'000'000'000));
    EXPECT_FALSE(clock_.HasRunOut(At(2'000'000'000), 0, 0));
  }
}

}  // namespace
