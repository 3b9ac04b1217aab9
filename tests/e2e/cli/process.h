#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace vtdirect_test {

struct ProcessResult {
  int status = 0;  ///< exit status; minus the signal's number when one ended the process
  std::string out;
  std::string err;
  long peakKilobytes = 0;  ///< most memory that it had at a time
};

struct ProcessOptions {
  std::map<std::string, std::string> environment;  ///< the whole of it
  std::string directory;                           ///< current directory; empty: that of the test
  std::string outFile;                             ///< standard output goes there and not into the result
  unsigned long fileSizeLimit = 0;                 ///< most bytes of a file that it may write; 0: any
};

/// A program that runs in a session of its own, so without a terminal, with nothing on its standard input and
/// with signals as usual, whatever the test was started by. Killed when it still runs at the end.
class Process {
 public:
  Process(const std::vector<std::string>& words, const ProcessOptions& options);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  void Signal(int signal) const;
  /// What it has written on standard output so far.
  [[nodiscard]] std::string OutputSoFar() const;
  [[nodiscard]] bool Running();
  /// Waits for its end, half a minute at most; then the process is killed and the test fails.
  ProcessResult Wait();

 private:
  [[nodiscard]] bool Reap(int flags);
  void AwaitEnd() const;
  pid_t id_ = -1;
  int out_ = -1;
  int err_ = -1;
  bool ended_ = false;
  int status_ = 0;
  long peakKilobytes_ = 0;
};

/// Polls until the condition holds. False after the given time.
template <typename Condition>
[[nodiscard]] bool WaitUntil(Condition condition, int milliseconds = 20'000);

void SleepMilliseconds(int milliseconds);

template <typename Condition>
bool WaitUntil(Condition condition, int milliseconds) {
  for (int waited = 0; waited < milliseconds; waited += 10) {
    if (condition()) return true;
    SleepMilliseconds(10);
  }
  return condition();
}

}  // namespace vtdirect_test
