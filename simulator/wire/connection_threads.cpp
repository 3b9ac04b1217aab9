#include "simulator/wire/connection_threads.h"

#include <thread>
#include <utility>

namespace vantry_sim {

void ConnectionThreads::enqueue(std::function<void()> work) {
  {
    std::unique_lock lock(mutex_);
    ended_.wait(lock, [this] { return running_ < kMostConnections; });
    ++running_;
  }
  std::thread([this, work = std::move(work)] {
    work();
    const std::lock_guard lock(mutex_);
    --running_;
    ended_.notify_all();
  }).detach();
}

void ConnectionThreads::shutdown() {
  std::unique_lock lock(mutex_);
  ended_.wait(lock, [this] { return running_ == 0; });
}

}  // namespace vantry_sim
