#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vantry_sim {

/// Tells everybody who waits that the server ends. Any thread.
class StopSignal {
 public:
  void Raise() {
    const std::lock_guard lock(mutex_);
    raised_ = true;
    changed_.notify_all();
  }

  [[nodiscard]] bool raised() const {
    const std::lock_guard lock(mutex_);
    return raised_;
  }

  /// Sleeps. @return false when the server ends meanwhile
  bool Sleep(std::chrono::milliseconds duration) {
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, duration, [this] { return raised_; });
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  bool raised_ = false;
};

}  // namespace vantry_sim
