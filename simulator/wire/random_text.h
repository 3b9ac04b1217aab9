#pragma once

#include <string>

namespace vantry_sim {

/// 32 hexadecimal digits that nobody can guess.
std::string RandomHexadecimal();

}  // namespace vantry_sim
