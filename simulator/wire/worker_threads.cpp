#include "simulator/wire/worker_threads.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace vantry_sim {
namespace {

constexpr auto longestIdleTime = std::chrono::seconds(2);

}  // namespace

WorkerThreads::~WorkerThreads() {
  std::unique_lock lock(mutex_);
  ending_ = true;
  changed_.notify_all();
  changed_.wait(lock, [this] { return threads_ == 0; });
}

void WorkerThreads::Run(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  waiting_.push_back(std::move(work));
  // An idle thread that was woken takes a moment to run, and counts as idle until then.
  if (waiting_.size() <= idle_) {
    changed_.notify_one();
    return;
  }
  try {
    std::thread([this] { Loop(); }).detach();
    ++threads_;
  } catch (const std::system_error&) {
    // The system grants no more threads. The work waits for one of those that there are.
    if (threads_ == 0) throw;
  }
}

void WorkerThreads::Loop() {
  std::unique_lock lock(mutex_);
  for (;;) {
    ++idle_;
    const bool woken =
        changed_.wait_for(lock, longestIdleTime, [this] { return ending_ || !waiting_.empty(); });
    --idle_;
    if (waiting_.empty()) {
      if (!woken || ending_) break;
      continue;
    }
    const std::function<void()> work = std::move(waiting_.front());
    waiting_.pop_front();
    lock.unlock();
    work();
    lock.lock();
  }
  --threads_;
  changed_.notify_all();
}

}  // namespace vantry_sim
