#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vtdirect::platform {

/// Lets the first exchange of a session go alone.
///
/// A server gives a session (a cookie, and with it a nonce) to whoever comes without one. Many threads that
/// begin at once would get one each. So one goes first, the others wait until it has an answer, and after
/// that nobody waits. When the first one ends without an answer, the next goes first.
///
/// Any thread. No lock is held when a function has returned.
class FirstExchange {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// Comes back when this visitor may go: the session is open, or it goes first, or it may not wait.
  /// @param visitor   tells one visitor from another; may enter again
  /// @param mayWait   false for a call from inside another exchange, which could be waiting for itself
  /// @param deadline  the visitor goes ahead when it has waited until then
  void Enter(const void* visitor, bool mayWait, Time deadline);

  /// Whether nobody waits here any more.
  [[nodiscard]] bool IsOpen() const { return open_; }

  /// The visitor has an answer. Opens the session if it was the one that went first.
  void Answered(const void* visitor);

  /// The visitor goes. If it went first and had no answer, another one may.
  void Leave(const void* visitor);

  /// Nobody waits any longer: another session has taken the place of this one.
  void Open();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::atomic<bool> open_{false};  ///< once and for all: from then on it alone is looked at
  const void* first_ = nullptr;
};

}  // namespace vtdirect::platform
