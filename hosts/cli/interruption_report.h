#pragma once

#include <mutex>
#include <string>

#include "hosts/cli/host.h"
#include "hosts/cli/interruption.h"

namespace vtdirect_cli {

/// Says what stands when a signal ends the program in the middle of an operation that changes the server: the
/// program may be ended while it waits for an answer, and can ask nobody then.
class InterruptionReport {
 public:
  /// @param command  name of the command
  InterruptionReport(Host& host, const std::string& command);
  ~InterruptionReport();
  InterruptionReport(const InterruptionReport&) = delete;
  InterruptionReport& operator=(const InterruptionReport&) = delete;

  /// What is to be said from now on, behind "interrupted".
  void Tell(const std::string& whatStands);

  /// What the report that an exception has destroyed would have said; empty without one.
  [[nodiscard]] static std::string ToldBeforeException();

  /// Says it now, once; for a command that has noticed the signal itself.
  ExitCode Report();

 private:
  void Write();

  Host& host_;
  std::string command_;
  std::mutex mutex_;
  std::string whatStands_;
  CleanUp atTheEnd_;
};

}  // namespace vtdirect_cli
