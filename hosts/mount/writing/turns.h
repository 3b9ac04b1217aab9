#pragma once

#include <condition_variable>
#include <mutex>
#include <set>
#include <string>

namespace vtdirect_mount {

/// Lets one thread at a time do something that is known by a name. No lock is held while it does so. Any thread.
class Turns {
 public:
  /// The turn of one thread; the next one has its turn after that.
  class Turn {
   public:
    /// Waits until nobody else has the name.
    Turn(Turns& turns, std::string name) : turns_(turns), name_(std::move(name)) {
      std::unique_lock lock(turns_.mutex_);
      turns_.ended_.wait(lock, [this] { return turns_.taken_.insert(name_).second; });
    }
    ~Turn() {
      const std::lock_guard lock(turns_.mutex_);
      turns_.taken_.erase(name_);
      turns_.ended_.notify_all();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    Turns& turns_;
    const std::string name_;
  };

 private:
  std::mutex mutex_;  // guards what follows
  std::condition_variable ended_;
  std::set<std::string> taken_;
};

}  // namespace vtdirect_mount
