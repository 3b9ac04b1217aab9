#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vtdirect_test {

/// Lets threads wait for each other: those that arrive stay until the test opens.
class Meeting {
 public:
  /// Arrives and stays until it is open, for ten seconds at most.
  void Attend() {
    std::unique_lock lock(mutex_);
    ++arrived_;
    changed_.notify_all();
    changed_.wait_for(lock, std::chrono::seconds(10), [this] { return open_; });
  }
  /// Waits until this many have arrived; false when they don't within ten seconds.
  [[nodiscard]] bool WaitFor(int count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10), [this, count] { return arrived_ >= count; });
  }
  /// Lets all go, those that arrive later too.
  void Open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }
  [[nodiscard]] int arrived() {
    const std::lock_guard lock(mutex_);
    return arrived_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int arrived_ = 0;
  bool open_ = false;
};

}  // namespace vtdirect_test
