#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>

namespace vtdirect::platform {

/// The exchanges that may be under way with one origin at one time. Further ones wait, first come first
/// served. Any thread.
class ExchangePlaces {
 public:
  /// One place, for as long as the object lives. No lock is held meanwhile.
  class Place {
   public:
    /// Waits for a place. There is no limit of time: whoever has one moves bytes or is ended by a limit of
    /// its own, so a place comes free, and a failure here would be the fault of other threads.
    /// @param bound    exchanges at one time
    /// @param mayWait  false for a call from inside another exchange: it takes a place above the bound, since
    ///                 the one that it would wait for may be its own
    Place(ExchangePlaces& places, int bound, bool mayWait);
    ~Place();
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

   private:
    ExchangePlaces& places_;
  };

  /// How many wait for a place now.
  [[nodiscard]] std::size_t Waiting();

 private:
  /// Lives on the stack of the thread that waits.
  struct Waiter {
    int bound;
    bool granted = false;
    std::condition_variable called;
  };

  std::mutex mutex_;
  int taken_ = 0;
  std::deque<Waiter*> waiting_;
};

}  // namespace vtdirect::platform
