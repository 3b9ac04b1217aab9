#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {

/// Says what is on the server when a signal ends the program in the middle of an operation that changes the server: the
/// program may be ended while it waits for an answer, and can ask nobody then.
class InterruptionReport {
 public:
  /// @param command  name of the command
  InterruptionReport(Host& host, const std::string& command);
  ~InterruptionReport();
  InterruptionReport(const InterruptionReport&) = delete;
  InterruptionReport& operator=(const InterruptionReport&) = delete;

  /// What is to be said from now on, after "interrupted": no change is under way, and this is the state.
  void Tell(const std::string& stateNow);

  /// What is to be said from now on, while the answer to a change has not come: it may be carried out all the
  /// same. Holds until the next call of either function.
  void TellOfOpenChange(const std::string& howToFindOut);

  /// What is known of a command that has ended in the middle.
  struct Told {
    std::string words;
    bool changeIsOpen = false;  ///< a change was sent whose answer had not come
  };

  /// What the report that an exception has destroyed would have said; nothing without one.
  [[nodiscard]] static std::optional<Told> ToldBeforeException();

  /// Says it now, once; for a command that has noticed the signal itself.
  ExitCode Report();

  /// Ends the command: with the report if a signal has ended it, which counts for more than what failed for it,
  /// else with the failure.
  ExitCode Fail(const Failure& failure);

 private:
  void Write();

  Host& host_;
  std::string command_;
  std::mutex mutex_;
  Told told_;
  CleanUp atTheEnd_;
};

}  // namespace vtdirect_cli
