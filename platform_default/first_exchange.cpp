#include "platform_default/first_exchange.h"

namespace vtdirect::platform {

void FirstExchange::Enter(const void* visitor, bool mayWait, Time deadline) {
  std::unique_lock lock(mutex_);
  const auto mayGo = [this] { return open_ || first_ == nullptr; };
  if (mayWait && first_ != visitor) changed_.wait_until(lock, deadline, mayGo);
  if (!open_ && first_ == nullptr) first_ = visitor;
}

void FirstExchange::Answered(const void* visitor) {
  if (open_) return;
  const std::lock_guard lock(mutex_);
  if (first_ != visitor) return;
  open_ = true;
  changed_.notify_all();
}

void FirstExchange::Leave(const void* visitor) {
  if (open_) return;
  const std::lock_guard lock(mutex_);
  if (first_ != visitor) return;
  first_ = nullptr;
  changed_.notify_all();
}

void FirstExchange::Open() {
  const std::lock_guard lock(mutex_);
  open_ = true;
  changed_.notify_all();
}

}  // namespace vtdirect::platform
