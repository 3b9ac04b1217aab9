#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vtdirect_test {

/// Lets one thread wait for what another one does, so that a test can put two threads into one order. A gate
/// that nobody opens lets everybody through after some seconds, so that a broken test ends.
class Gate {
 public:
  void Open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }
  /// @return whether the gate has been opened
  bool Pass() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10), [this] { return open_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool open_ = false;
};

}  // namespace vtdirect_test
