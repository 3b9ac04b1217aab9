#include "simulator/wire/request_log.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <stdexcept>

#include "simulator/wire/json.h"

namespace vantry_sim {
namespace {

std::string Timestamp(std::chrono::system_clock::time_point time) {
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
  const std::time_t seconds = milliseconds / 1000;
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 80> text{};
  const int length = std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ",
                                   parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour,
                                   parts.tm_min, parts.tm_sec, static_cast<int>(milliseconds % 1000));
  return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace

std::string LogLine(const Exchange& exchange) {
  JsonText json;
  json.StartObject();
  json.Member("time", Timestamp(exchange.start));
  json.Member("method", exchange.method).Member("path", exchange.target);
  json.Member("status", static_cast<std::int64_t>(exchange.status));
  json.Member("bytes", static_cast<std::int64_t>(exchange.body_bytes));
  json.Member("user", exchange.user).Member("port", static_cast<std::int64_t>(exchange.remote_port));
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
