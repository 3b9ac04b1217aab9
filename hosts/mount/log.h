#pragma once

#include <map>
#include <mutex>
#include <string>

namespace vtdirect_mount {

/// What a mount has to say while nobody looks: one line each, with the time. The same text comes at most once
/// a minute, since a server that is away fails thousands of calls. Any thread.
class Log {
 public:
  ~Log();
  Log() = default;
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  /// Writes to the end of a file from now on, which only its user can read. One that has grown beyond a
  /// mebibyte is renamed to "NAME.1" first.
  /// @return the error number of what failed; 0 for none
  [[nodiscard]] int OpenFile(const std::string& path);
  /// Writes to standard error from now on.
  void UseStandardError();

  /// Writes a line. Control characters of the text are shown as "?".
  void Write(const std::string& text);

 private:
  std::mutex mutex_;
  int descriptor_ = -1;
  bool isOwned_ = false;
  std::map<std::string, long> lastSeen_;
};

}  // namespace vtdirect_mount
