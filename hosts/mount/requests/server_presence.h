#pragma once

#include <chrono>
#include <mutex>

namespace vtdirect_mount {

/// Whether the server is silent altogether. A question to a silent server takes as long as the limits of time
/// allow, and those that wait for a free thread would take a multiple of that. So after one that failed late,
/// and no other one got an answer meanwhile, all fail at once for a moment. Any thread.
class ServerPresence {
 public:
  using Clock = std::chrono::steady_clock;

  /// How long questions fail at once, before the server is tried again.
  static constexpr std::chrono::seconds pause{3};
  /// A question that fails sooner than this holds up nobody.
  static constexpr std::chrono::seconds late{1};

  /// Notes how a question ended.
  /// @param error  its error number; 0 for an answer
  void Note(Clock::time_point begun, Clock::time_point ended, int error);

  /// Whether questions fail at once.
  [[nodiscard]] bool IsAway(Clock::time_point now) const;

 private:
  mutable std::mutex mutex_;
  Clock::time_point lastAnswer_{};
  Clock::time_point awayUntil_{};
};

}  // namespace vtdirect_mount
