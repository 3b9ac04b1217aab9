#include "tests/support/trace_recorder.h"

#include <ostream>

namespace vtdirect_test {

void PrintTo(const TraceLine& line, std::ostream* out) {
  *out << "[" << line.type << " " << line.name << "] \"" << line.text << "\"";
}

TraceRecorder::TraceRecorder() {
  dp::SetTraceHandler(
      [this](const char* area, const char* name, dp::TraceType type, const std::string& text) {
        const std::lock_guard lock(mutex_);
        if (std::string("fenlet") != area) strayAreas_.emplace_back(area);
        lines_.push_back({static_cast<int>(type), name, text});
      });
}

TraceRecorder::~TraceRecorder() {
  dp::SetTraceHandler({});
}

}  // namespace vtdirect_test
