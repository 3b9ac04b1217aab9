#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "tests/e2e/cli/process.h"

namespace vtdirect_test {

/// What happens to one request of a command, or to the program while it waits for the answer.
enum class Accident { KilledBefore, KilledAfter, Refused, Lost, Cut, Reset, Silent };

/// All of them.
inline constexpr Accident everyAccident[] = {Accident::KilledBefore, Accident::KilledAfter, Accident::Refused,
                                             Accident::Lost,         Accident::Cut,         Accident::Reset,
                                             Accident::Silent};

[[nodiscard]] const char* NameOf(Accident accident);
void PrintTo(Accident accident, std::ostream* stream);

/// A command of which one request after the other meets with an accident.
struct AccidentTrial {
  /// Starts the program, with this proxy for all that it asks, and with these options before its command.
  std::function<std::unique_ptr<Process>(const std::string& proxy, const std::vector<std::string>& options)>
      start;
  /// What is to happen to a request that writes, or to one that reads.
  std::function<std::vector<Accident>(bool isWrite)> accidentsOf;
  /// Goes back to the beginning; called before each run.
  std::function<void()> before;
  /// Looks at what is left; called after each run.
  std::function<void(const ProcessResult& result)> check;
};

/// Runs the command once without any accident, to learn of its requests, and then with each accident of each of
/// them. Ends with the first failure of the test.
/// @return how many requests the command made
int MeetEveryAccident(const AccidentTrial& trial);

}  // namespace vtdirect_test
