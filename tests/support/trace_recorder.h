#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "platform/trace.h"

namespace vtdirect_test {

/// One traced line as a test compares it.
struct TraceLine {
  int type = 0;
  std::string name;
  std::string text;
  friend bool operator==(const TraceLine&, const TraceLine&) = default;
};
void PrintTo(const TraceLine& line, std::ostream* out);

/// Collects every traced line while it lives. Lines of another area than "fenlet" show in `strayAreas()`. Any
/// number of threads may trace; what was traced is read when they are done.
class TraceRecorder {
 public:
  TraceRecorder();
  ~TraceRecorder();
  TraceRecorder(const TraceRecorder&) = delete;
  TraceRecorder& operator=(const TraceRecorder&) = delete;

  [[nodiscard]] const std::vector<TraceLine>& lines() const { return lines_; }
  [[nodiscard]] const std::vector<std::string>& strayAreas() const { return strayAreas_; }
  void Clear() { lines_.clear(); }

 private:
  std::mutex mutex_;
  std::vector<TraceLine> lines_;
  std::vector<std::string> strayAreas_;
};

}  // namespace vtdirect_test
