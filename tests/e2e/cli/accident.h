#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "tests/e2e/cli/process.h"

namespace vtdirect_test {

/// What happens to one request of a program, or to the program while it waits for the answer.
enum class Accident { KilledBefore, KilledAfter, Refused, Lost, Cut, Reset, Silent };

/// All of them.
inline constexpr Accident everyAccident[] = {Accident::KilledBefore, Accident::KilledAfter, Accident::Refused,
                                             Accident::Lost,         Accident::Cut,         Accident::Reset,
                                             Accident::Silent};

[[nodiscard]] const char* NameOf(Accident accident);
void PrintTo(Accident accident, std::ostream* stream);

/// Starts a program that asks its server through a proxy.
using StartThrough = std::function<std::unique_ptr<Process>(const std::string& proxyUrl)>;

/// Runs a program whose request of this number, counted from 0, meets with the accident.
[[nodiscard]] ProcessResult RunWithAccident(int at, Accident accident, const StartThrough& start);

/// Runs a program that meets with none, and tells of each of its requests whether it changes something.
[[nodiscard]] std::vector<bool> WritesOf(const StartThrough& start);

/// Whether an accident at a request is tried by this build.
[[nodiscard]] bool IsTried(bool isWrite);

}  // namespace vtdirect_test
