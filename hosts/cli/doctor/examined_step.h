#pragma once

#include <functional>
#include <string>

namespace vtdirect_cli {

/// One step of the way to a server, and what a look at it has shown.
struct ExaminedStep {
  enum class State {
    Ok,
    Warning,  ///< works, and somebody should know
    Failed,   ///< what the program needs does not work
    Skipped   ///< was not looked at, and `seen` says why
  };
  std::string step;  ///< "name", "route" and so on
  State state = State::Ok;
  std::string seen;    ///< without a full stop
  std::string advice;  ///< what to do; empty if nothing is to be done
};

/// Takes each step once it was looked at.
using ExaminedStepFunction = std::function<void(const ExaminedStep&)>;

/// "ok", "warning", "failed" or "skipped".
[[nodiscard]] const char* WordOf(ExaminedStep::State state);

}  // namespace vtdirect_cli
