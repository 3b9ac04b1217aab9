#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace vtdirect_mount {

/// What the kernel has open. A mount may end before the kernel has closed all of it; then the rest is closed by the
/// end of this. Any thread.
class OpenHandles {
 public:
  /// Keeps a thing until it is dropped.
  /// @return its address, by which the kernel speaks of it
  template <typename Thing>
  [[nodiscard]] std::uint64_t Keep(std::shared_ptr<Thing> thing) {
    const auto number = reinterpret_cast<std::uint64_t>(thing.get());
    const std::lock_guard lock(mutex_);
    things_[number] = std::move(thing);
    return number;
  }
  void Drop(std::uint64_t number) {
    std::unique_lock lock(mutex_);
    const auto dropped = things_.extract(number);
    lock.unlock();  // what ends with the thing takes its time
  }

 private:
  std::mutex mutex_;
  std::unordered_map<std::uint64_t, std::shared_ptr<void>> things_;
};

}  // namespace vtdirect_mount
