#pragma once

#include <functional>
#include <string>

namespace vtdirect_cli {

/// What a look at one step of the way to a server has shown.
struct Finding {
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

/// Takes each finding as it is made.
using FindingFunction = std::function<void(const Finding&)>;

/// "ok", "warning", "failed" or "skipped".
[[nodiscard]] const char* WordOf(Finding::State state);

}  // namespace vtdirect_cli
