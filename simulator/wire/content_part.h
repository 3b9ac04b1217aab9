#pragma once

#include "simulator/wire/messages.h"

namespace vantry_sim {

/// Makes a content's answer the part of it that was asked for. Leaves any other answer alone.
void ApplyRange(const Request& request, Response& response);

}  // namespace vantry_sim
