#include "hosts/cli/work_folder/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace vtdirect_cli {

TEST(RunInParallel, RunsEachTaskOnce) {
  for (const unsigned threads : {1U, 4U, 16U}) {
    std::vector<std::atomic<int>> runs(100);
    RunInParallel(runs.size(), threads, [&runs](std::size_t number) { ++runs[number]; });
    for (const auto& count : runs) EXPECT_EQ(count, 1);
  }
  RunInParallel(0, 4, [](std::size_t) { ADD_FAILURE(); });
}

TEST(RunInParallel, LetsTheFirstOneEndAloneSoThatALoginIsAskedForOnce) {
  std::atomic<bool> firstHasEnded = false;
  RunInParallel(20, 8, [&firstHasEnded](std::size_t number) {
    if (number == 0) {
      std::this_thread::yield();
      firstHasEnded = true;
    } else {
      EXPECT_TRUE(firstHasEnded);
    }
  });
}

TEST(RunInParallel, TakesNoMoreThreadsThanItIsTold) {
  std::mutex mutex;
  std::set<std::thread::id> threads;
  RunInParallel(200, 3, [&](std::size_t) {
    const std::lock_guard lock(mutex);
    threads.insert(std::this_thread::get_id());
  });
  EXPECT_LE(threads.size(), 3U);
}

TEST(RunInParallel, ThrowsWhatATaskThrowsOnWhateverThread) {
  const auto run = [](std::size_t bad) {
    RunInParallel(100, 4, [bad](std::size_t number) {
      if (number == bad) throw std::runtime_error("no");
    });
  };
  EXPECT_THROW(run(0), std::runtime_error);
  EXPECT_THROW(run(50), std::runtime_error);
}

}  // namespace vtdirect_cli
