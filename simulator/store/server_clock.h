#pragma once

#include <cstdint>
#include <mutex>

namespace vantry_sim {

/// The time that the server believes in: that of the machine, unless somebody has set it. Documents, tickets
/// and sessions go by it; the log and the history of requests don't, since they measure. Any thread.
class ServerClock {
 public:
  /// Milliseconds since 1970.
  [[nodiscard]] std::int64_t Now() const;

  /// Goes on from another time. @param frozen it stays at that time
  void Set(std::int64_t milliseconds, bool frozen);

  /// Puts the time forward, or back for a negative number.
  void Advance(std::int64_t milliseconds);

  /// Goes by the machine's time again.
  void Reset();

  [[nodiscard]] bool frozen() const;

 private:
  [[nodiscard]] std::int64_t NowLocked() const;

  mutable std::mutex mutex_;
  std::int64_t offset_ = 0;  ///< to the machine's time; the time itself while frozen
  bool frozen_ = false;
};

}  // namespace vantry_sim
