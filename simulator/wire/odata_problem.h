#pragma once

#include <string>

namespace vantry_sim {

/// Why a query isn't answered: 400 for what is wrong, 501 for what this server doesn't do.
struct ODataProblem {
  int status = 400;
  std::string reason;
};

}  // namespace vantry_sim
