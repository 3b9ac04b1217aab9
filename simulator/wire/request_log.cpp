#include "simulator/wire/request_log.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "simulator/wire/json.h"
#include "simulator/wire/timestamp.h"

namespace vantry_sim {
std::string LogLine(const Exchange& exchange) {
  JsonText json;
  json.StartObject();
  const auto start = std::chrono::duration_cast<std::chrono::milliseconds>(exchange.start.time_since_epoch());
  json.Member("time", Timestamp(start.count()));
  json.Member("method", exchange.method).Member("path", exchange.target);
  json.Member("status", static_cast<std::int64_t>(exchange.status));
  json.Member("bytes", static_cast<std::int64_t>(exchange.bodyBytes));
  json.Member("user", exchange.user).Member("port", static_cast<std::int64_t>(exchange.remotePort));
  json.Member("microseconds", static_cast<std::int64_t>(exchange.duration.count()));
  json.EndObject();
  return json.Take() + "\n";
}

RequestLog::RequestLog(const std::string& file) {
  if (file.empty()) return;
  file_.reset(std::fopen(file.c_str(), "ae"));
  if (!file_) throw std::runtime_error("cannot write the log " + file + ": " + std::strerror(errno));
}

void RequestLog::Write(const Exchange& exchange) {
  if (!file_) return;
  const std::string line = LogLine(exchange);
  const std::lock_guard lock(mutex_);
  std::fwrite(line.data(), 1, line.size(), file_.get());
  std::fflush(file_.get());
}

}  // namespace vantry_sim
