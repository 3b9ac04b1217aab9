#pragma once

#include "simulator/wire/faults.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

/// The answer that a fault puts in the place of any other.
Response FaultAnswer(const FaultAction& fault);

}  // namespace vantry_sim
