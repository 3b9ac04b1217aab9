#pragma once

#include <httplib.h>

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>

namespace vantry_sim {

/// Gives each connection a thread of its own. A pool would let idle kept-alive connections starve new ones.
class ConnectionThreads final : public httplib::TaskQueue {
 public:
  /// Beyond so many connections at once, a new one waits for an old one to end.
  static constexpr std::size_t kMostConnections = 1024;

  void enqueue(std::function<void()> work) override;
  /// Returns when all connections have ended.
  void shutdown() override;

 private:
  std::mutex mutex_;
  std::condition_variable ended_;
  std::size_t running_ = 0;
};

}  // namespace vantry_sim
