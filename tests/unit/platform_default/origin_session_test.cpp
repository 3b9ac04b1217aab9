#include "platform_default/origin_session.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using vtdirect::platform::OriginSession;

/// Connecting took longer than the limit of 30 seconds at the time zero.
class OriginThatDidNotAnswer : public testing::Test {
 protected:
  OriginThatDidNotAnswer() { session_.WriteOff(OriginSession::Time(), connectLimit); }
  static OriginSession::Time After(milliseconds time) { return OriginSession::Time() + time; }

  static constexpr long connectLimit = 30'000;
  OriginSession session_{{}, nullptr};
};

TEST_F(OriginThatDidNotAnswer, IsTriedAgainAfterFiveSeconds) {
  EXPECT_TRUE(session_.IsWrittenOff(After(milliseconds(0)), connectLimit));
  EXPECT_TRUE(session_.IsWrittenOff(After(seconds(5) - milliseconds(1)), connectLimit));
  EXPECT_FALSE(session_.IsWrittenOff(After(seconds(5)), connectLimit));
}

TEST_F(OriginThatDidNotAnswer, IsTriedAtOnceWithAnotherLimit) {
  EXPECT_FALSE(session_.IsWrittenOff(After(seconds(1)), connectLimit + 1));
}

TEST_F(OriginThatDidNotAnswer, IsTriedAtOnceWhenItHasAnsweredMeanwhile) {
  session_.ForgetWriteOff();
  EXPECT_FALSE(session_.IsWrittenOff(After(seconds(1)), connectLimit));
}

}  // namespace
