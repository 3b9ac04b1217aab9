#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

namespace vantry_sim {

/// One exchange as it went over the wire.
struct Exchange {
  std::chrono::system_clock::time_point start;
  std::chrono::microseconds duration{0};
  std::string method;  ///< empty when the request line could not be read
  std::string target;
  int status = 0;               ///< as it was sent; 0 when no status line was
  std::uint64_t bodyBytes = 0;  ///< sent after the header block, the framing of chunks included
  std::string user;
  int remotePort = 0;
};

/// The line for an exchange: one JSON object and a line feed. Members in order: time (UTC, ISO 8601 with
/// milliseconds), method, path (with query), status, bytes, user, port, microseconds.
std::string LogLine(const Exchange& exchange);

/// Appends a line for each exchange. May be called by several threads at once; each line is whole on the
/// disk's side of the process as soon as the call returns.
class RequestLog {
 public:
  /// @param file name of the file to append to; empty: nothing is logged. @throws std::runtime_error
  explicit RequestLog(const std::string& file);
  void Write(const Exchange& exchange);

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::mutex mutex_;
  std::unique_ptr<std::FILE, CloseFile> file_;
};

}  // namespace vantry_sim
