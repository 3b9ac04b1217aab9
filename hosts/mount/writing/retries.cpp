#include "hosts/mount/writing/retries.h"

#include <chrono>

namespace vtdirect_mount {
namespace {

constexpr std::chrono::seconds betweenTries{15};

}  // namespace

Retries::~Retries() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void Retries::Now() {
  {
    const std::lock_guard lock(mutex_);
    isWoken_ = true;
  }
  changed_.notify_all();
}

void Retries::NoteEnd() {
  const std::lock_guard lock(mutex_);
  isTrying_ = false;
  changed_.notify_all();
}

void Retries::Run() {
  std::unique_lock lock(mutex_);
  while (!isEnding_) {
    changed_.wait_for(lock, betweenTries, [this] { return isEnding_ || (isWoken_ && !isTrying_); });
    // A try can take longer than the time between two; the next one begins after it.
    if (isTrying_) continue;
    isWoken_ = false;
    if (isEnding_) return;
    isTrying_ = true;
    lock.unlock();
    begin_();
    lock.lock();
  }
}

}  // namespace vtdirect_mount
