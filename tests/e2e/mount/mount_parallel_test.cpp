#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/mount/mount_fixture.h"

namespace vtdirect_test {
namespace {

using namespace std::chrono_literals;

/// Counts the questions that are on their way at one time.
class Counter {
 public:
  // Each stays on its way until as many are there as are expected, or for a moment, so that one too many is seen.
  void Enter(std::size_t expected) {
    std::unique_lock lock(mutex_);
    most_ = std::max(most_, ++now_);
    changed_.notify_all();
    changed_.wait_for(lock, 50ms, [&] { return now_ > expected; });
  }
  void Leave() {
    const std::lock_guard lock(mutex_);
    --now_;
  }
  void Forget() {
    const std::lock_guard lock(mutex_);
    most_ = 0;
  }
  [[nodiscard]] std::size_t most() {
    const std::lock_guard lock(mutex_);
    return most_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t now_ = 0;
  std::size_t most_ = 0;
};

constexpr std::size_t parallel = 3;

class Parallel : public MountTest {
 protected:
  Counter counter_;

 private:
  Meddler proxy_{[this](Peer& peer, const WireRequest& /*request*/, const Meddler::Forward& forward) {
    counter_.Enter(parallel);
    const std::string answer = forward();
    counter_.Leave();
    peer.Send(answer);
  }};

 protected:
  void SetUp() override {
    MountTest::SetUp();
    if (IsSkipped()) return;
    Serve({"--seed", "bulk:40,size=10"});
    environment_["http_proxy"] = proxy_.Url();
  }
};

TEST_F(Parallel, BoundsTheQuestionsOfManyPrograms) {
  Mount({"--parallel", std::to_string(parallel)});
  ASSERT_EQ(Shell("ls \"$TREE/Products/Bulk/Folders/Parts\" | wc -l").out, "40\n");
  counter_.Forget();
  const auto result =
      Shell("ls \"$TREE/Products/Bulk/Folders/Parts/\"* -1d | xargs -P 16 -n 1 -d '\\n' stat -c %s");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(counter_.most(), parallel);
}

}  // namespace
}  // namespace vtdirect_test
