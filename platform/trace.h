#pragma once

#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "export.h"

/// Tracing. The library never prints: every line goes to the handler that the host has set, or, without one,
/// to standard error as far as the environment variable FENLOOM_TRACE turns its type on.
namespace dp {

/// What a line is about; FENLOOM_TRACE names the types by these numbers.
enum class TraceType : int { Information = 0, Miss = 1, Warning = 2, Error = 3 };

/// Receives every line, exactly as composed, line feeds or the lack of them included. Called on the thread
/// that traced, possibly on several at once.
using TraceHandler =
    std::function<void(const char* area, const char* name, TraceType type, const std::string& text)>;

/// Hands every line of every type to `handler` from now on. An empty function restores the default: standard
/// error gets the types that FENLOOM_TRACE names, digits from 0 to 3 in any order ("23": warnings and
/// errors), and nothing when it is not set. May be called from any thread.
VTDIRECT_API void SetTraceHandler(TraceHandler handler);

/// A line that is composed piece by piece and written when the formatter goes.
class VTDIRECT_API TraceFormatter {
 public:
  /// Both texts must outlive it; without `enabled` nothing is composed and nothing written.
  TraceFormatter(const char* area, const char* name, TraceType type, bool enabled);
  /// The line is written once, by the formatter that was moved to.
  TraceFormatter(TraceFormatter&&) noexcept;
  TraceFormatter(const TraceFormatter&) = delete;
  TraceFormatter& operator=(const TraceFormatter&) = delete;
  TraceFormatter& operator=(TraceFormatter&&) = delete;
  ~TraceFormatter();

  /// Adds a piece; swallowed when the trace type is switched off.
  template <typename Piece>
  TraceFormatter& operator<<(const Piece& piece) {
    if (text_) *text_ << piece;
    return *this;
  }

 private:
  const char* area_;
  const char* name_;
  TraceType type_;
  std::unique_ptr<std::ostringstream> text_;
};

/// Made on the spot for each trace and dropped after it. Both texts must outlive it.
class VTDIRECT_API LXTracer {
 public:
  /// The two texts go before each line; null counts as empty.
  LXTracer(const char* area, const char* name);

  /// Writes one line with `printf` formatting, of any length.
  void operator()(TraceType type, const char* format, ...) const __attribute__((format(printf, 3, 4)));

  /// Gives a formatter for a line of this type.
  [[nodiscard]] TraceFormatter operator()(TraceType type) const;

 private:
  const char* area_;
  const char* name_;
};

}  // namespace dp
