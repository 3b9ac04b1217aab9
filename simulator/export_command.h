#pragma once

#include <string>

#include "simulator/options.h"

namespace vantry_sim {

/// Writes what a data directory holds as a state file. @throws std::exception when it cannot
void ExportState(const ExportOptions& options);

/// Looks at a state file and prints what it holds, or what is wrong with it. @return the exit code
int CheckState(const std::string& file);

}  // namespace vantry_sim
