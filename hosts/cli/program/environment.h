#pragma once

#include <string>

namespace vtdirect_cli {

/// A variable of the environment; empty when it is unset, which counts as the same everywhere here.
[[nodiscard]] std::string Environment(const char* name);

/// Where the program keeps what it must know from one run to the next: $XDG_STATE_HOME/vtdirect, else
/// ~/.local/state/vtdirect; empty without a home.
[[nodiscard]] std::string StateDirectory();

}  // namespace vtdirect_cli
