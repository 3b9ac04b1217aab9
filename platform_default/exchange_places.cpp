#include "platform_default/exchange_places.h"

namespace vtdirect::platform {

ExchangePlaces::Place::Place(ExchangePlaces& places, int bound, bool mayWait) : places_(places) {
  std::unique_lock lock(places_.mutex_);
  if (!mayWait || (places_.waiting_.empty() && places_.taken_ < bound)) {
    ++places_.taken_;
    return;
  }
  Waiter self{bound, false, {}};
  places_.waiting_.push_back(&self);
  self.called.wait(lock, [&self] { return self.granted; });
}

ExchangePlaces::Place::~Place() {
  const std::lock_guard lock(places_.mutex_);
  --places_.taken_;
  while (!places_.waiting_.empty() && places_.taken_ < places_.waiting_.front()->bound) {
    Waiter& next = *places_.waiting_.front();
    places_.waiting_.pop_front();
    ++places_.taken_;
    next.granted = true;
    // Called under the lock: the waiter is gone as soon as it can see that it was granted a place.
    next.called.notify_one();
  }
}

std::size_t ExchangePlaces::Waiting() {
  const std::lock_guard lock(mutex_);
  return waiting_.size();
}

}  // namespace vtdirect::platform
