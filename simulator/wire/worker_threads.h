#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace vantry_sim {

/// Threads that come when there is work and go when there has been none for a while.
class WorkerThreads {
 public:
  WorkerThreads() = default;
  WorkerThreads(const WorkerThreads&) = delete;
  WorkerThreads& operator=(const WorkerThreads&) = delete;
  /// Waits until all work is done.
  ~WorkerThreads();

  /// Runs the work on a thread of its own, at once. Any thread. Whoever calls sees to it that there are not
  /// too many at a time.
  void Run(std::function<void()> work);

 private:
  void Loop();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> waiting_;
  std::size_t idle_ = 0;
  std::size_t threads_ = 0;
  bool ending_ = false;
};

}  // namespace vantry_sim
