#pragma once

#include <string>

#include "export.h"

namespace dp::Environment {

/// True when the variable is set and not empty. Any thread.
[[nodiscard]] VTDIRECT_API bool Test(const char* name);

/// The value of the variable, empty when it is not set. Any thread.
[[nodiscard]] VTDIRECT_API std::string Get(const char* name);

}  // namespace dp::Environment
