#include "hosts/cli/program/trace_log.h"

#include <vtdirect/platform/trace.h>

#include <mutex>
#include <ostream>

#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

struct Log {
  std::mutex mutex;
  std::string levels;
  std::ostream* err = nullptr;
};

// The library's trace handler is one for the process, and may still be called while the process ends.
Log& TheLog() {
  static Log* const log = new Log;
  return *log;
}

[[nodiscard]] std::string WithoutLineEnd(std::string text) {
  while (text.ends_with('\n') || text.ends_with('\r')) text.pop_back();
  return text;
}

void Take(const char* name, dp::TraceType type, const std::string& text) {
  Log& log = TheLog();
  const std::lock_guard lock(log.mutex);
  const char level = static_cast<char>('0' + static_cast<int>(type));
  if (log.err == nullptr || log.levels.find(level) == std::string::npos) return;
  *log.err << "trace " << level << ' ' << name << ": " << Printable(WithoutLineEnd(text)) << std::endl;
}

}  // namespace

std::string TraceLevelsFault(const std::string& levels) {
  if (!levels.empty() && levels.find_first_not_of("0123") == std::string::npos) return {};
  return "--trace takes digits from 0 to 3, for example 23 for warnings and errors";
}

void StartTraceLog(const std::string& levels, std::ostream& err) {
  {
    const std::lock_guard lock(TheLog().mutex);
    TheLog().levels = levels;
    TheLog().err = &err;
  }
  dp::SetTraceHandler([](const char* /*area*/, const char* name, dp::TraceType type,
                         const std::string& text) { Take(name, type, text); });
}

}  // namespace vtdirect_cli
