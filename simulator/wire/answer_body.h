#pragma once

#include <httplib.h>

#include <optional>

#include "simulator/wire/connection_stream.h"
#include "simulator/wire/faults.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

/// Gives the HTTP library the body of an answer: a short one as it is, a file as a stream of blocks.
/// @param stream outlives the answer
/// @param fault a cut, a chunked cut or a stall that has its bytes; nothing for a whole body
/// @return false when the body's file cannot be opened; nothing was set then
[[nodiscard]] bool SetBody(httplib::Response& out, const Response& answer, ConnectionStream& stream,
                           const std::optional<FaultAction>& fault);

}  // namespace vantry_sim
