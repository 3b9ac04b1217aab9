#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace vantry_sim {

/// A started vantry-sim with its standard output. Killed at the end if it still runs.
class Process {
 public:
  /// @param closedOutput  it has no standard output at all
  explicit Process(const std::vector<std::string>& arguments, bool closedOutput = false);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  /// The next line of standard output; what there is after ten seconds of silence or at the end.
  std::string Line();

  /// The port of the ready line; 0 when it isn't one.
  int ReadyPort();

  /// The admin's port of the ready line, once it was read; 0 without one.
  [[nodiscard]] int adminPort() const { return adminPort_; }

  void Signal(int signal) const;
  [[nodiscard]] pid_t id() const { return id_; }

  /// The most memory that it had at a time, in KiB of resident set; 0 when it cannot be asked.
  [[nodiscard]] long PeakKilobytes() const;

  /// The exit code, or 1000 and the signal that ended it.
  int Wait();

 private:
  pid_t id_ = -1;
  int output_ = -1;
  int adminPort_ = 0;
};

/// A directory of its own for each test.
class SimulatorProcess : public ::testing::Test {
 protected:
  SimulatorProcess();
  ~SimulatorProcess() override;

  /// The options for a server on any port with a small demo, and more.
  [[nodiscard]] std::vector<std::string> Arguments(std::vector<std::string> more = {}) const;

  std::filesystem::path directory_;
};

}  // namespace vantry_sim
