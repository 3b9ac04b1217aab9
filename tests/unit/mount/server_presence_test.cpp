#include "hosts/mount/requests/server_presence.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace vtdirect_mount {
namespace {

using namespace std::chrono_literals;

class ServerPresenceTest : public testing::Test {
 protected:
  // A question that began and ended so many seconds after the beginning.
  void Note(std::chrono::seconds begun, std::chrono::seconds ended, int error) {
    presence_.Note(begin_ + begun, begin_ + ended, error);
  }
  [[nodiscard]] bool IsAwayAt(std::chrono::seconds time) const { return presence_.IsAway(begin_ + time); }

  const ServerPresence::Clock::time_point begin_ = ServerPresence::Clock::now();
  ServerPresence presence_;
};

TEST_F(ServerPresenceTest, IsAwayForAMomentAfterAQuestionThatFailedLate) {
  EXPECT_FALSE(IsAwayAt(0s));
  Note(0s, 30s, ETIMEDOUT);
  EXPECT_TRUE(IsAwayAt(30s));
  EXPECT_TRUE(IsAwayAt(32s));
  EXPECT_FALSE(IsAwayAt(33s));
}

TEST_F(ServerPresenceTest, IsThereWhileItAnswersOtherQuestions) {
  Note(5s, 6s, 0);
  Note(0s, 30s, ETIMEDOUT);
  EXPECT_FALSE(IsAwayAt(30s));
}

TEST_F(ServerPresenceTest, IsThereAgainWithItsNextAnswer) {
  Note(0s, 30s, EIO);
  ASSERT_TRUE(IsAwayAt(31s));
  Note(1s, 31s, ENOENT);
  EXPECT_FALSE(IsAwayAt(31s));
}

TEST_F(ServerPresenceTest, IsNotDoubtedForWhatFailsAtOnce) {
  Note(10s, 10s, EIO);
  EXPECT_FALSE(IsAwayAt(10s));
}

}  // namespace
}  // namespace vtdirect_mount
