#include "simulator/store/server_clock.h"

#include <chrono>

namespace vantry_sim {
namespace {

std::int64_t MachineTime() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace

std::int64_t ServerClock::Now() const {
  const std::lock_guard lock(mutex_);
  return NowLocked();
}

void ServerClock::Set(std::int64_t milliseconds, bool frozen) {
  const std::lock_guard lock(mutex_);
  frozen_ = frozen;
  offset_ = frozen ? milliseconds : milliseconds - MachineTime();
}

void ServerClock::Advance(std::int64_t milliseconds) {
  const std::lock_guard lock(mutex_);
  offset_ += milliseconds;
}

void ServerClock::Reset() {
  const std::lock_guard lock(mutex_);
  offset_ = 0;
  frozen_ = false;
}

bool ServerClock::frozen() const {
  const std::lock_guard lock(mutex_);
  return frozen_;
}

std::int64_t ServerClock::NowLocked() const {
  return frozen_ ? offset_ : MachineTime() + offset_;
}

}  // namespace vantry_sim
