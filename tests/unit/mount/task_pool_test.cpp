#include "hosts/mount/requests/task_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

namespace vtdirect_mount {
namespace {

TEST(TaskPool, CarriesOutNoMoreTasksAtOnceThanItMay) {
  std::atomic<int> running{0};
  std::atomic<int> most{0};
  std::promise<void> done;
  std::atomic<int> left{40};
  TaskPool pool(4);
  for (int task = 0; task < 40; ++task) {
    pool.Post([&] {
      const int now = ++running;
      for (int before = most; before < now && !most.compare_exchange_weak(before, now);) {
      }
      std::this_thread::yield();
      --running;
      if (--left == 0) done.set_value();
    });
  }
  done.get_future().wait();
  EXPECT_LE(most, 4);
}

TEST(TaskPool, LetsASlowTaskHoldUpNoOther) {
  TaskPool pool(2);
  std::promise<void> release;
  std::promise<void> other;
  pool.Post([future = release.get_future().share()] { future.wait(); });
  pool.Post([&] { other.set_value(); });
  other.get_future().wait();
  release.set_value();
}

TEST(TaskPool, BeginsWhatCanWaitWhenNothingElseDoes) {
  TaskPool pool(1);
  std::promise<void> release;
  std::promise<void> done;
  std::string order;
  pool.Post([future = release.get_future().share()] { future.wait(); });
  pool.PostLater([&] {
    order += "later";
    done.set_value();
  });
  pool.Post([&] { order += "now "; });
  release.set_value();
  done.get_future().wait();
  EXPECT_EQ(order, "now later");
}

TEST(TaskPool, WaitsForATaskNoLongerThanItIsTold) {
  TaskPool pool(1);
  std::promise<void> begun;
  std::promise<void> release;
  bool isCarriedOut = false;
  pool.Post([&begun, future = release.get_future().share()] {
    begun.set_value();
    future.wait();
  });
  begun.get_future().wait();
  pool.Post([&] { isCarriedOut = true; });
  EXPECT_FALSE(pool.StopWithin(std::chrono::milliseconds(1)));
  release.set_value();
  EXPECT_TRUE(pool.StopWithin(std::chrono::seconds(10)));
  pool.Stop();
  EXPECT_FALSE(isCarriedOut);
}

TEST(TaskPool, DropsWhatComesAfterItsEnd) {
  TaskPool pool(1);
  bool isCarriedOut = false;
  pool.Stop();
  pool.Post([&] { isCarriedOut = true; });
  pool.Stop();
  EXPECT_FALSE(isCarriedOut);
}

}  // namespace
}  // namespace vtdirect_mount
