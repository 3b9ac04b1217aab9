#pragma once

#include <string>

namespace vtdirect_cli {

/// A variable of the environment; empty when it is unset, which counts as the same everywhere here.
[[nodiscard]] std::string Environment(const char* name);

}  // namespace vtdirect_cli
