#pragma once

#include <httplib.h>

#include <optional>

#include "simulator/wire/connection_stream.h"
#include "simulator/wire/faults.h"
#include "simulator/wire/messages.h"
#include "simulator/wire/stop_signal.h"

namespace vantry_sim {

/// Where an answer goes.
struct AnswerWay {
  ConnectionStream& stream;
  StopSignal& stop;
};

/// Gives the HTTP library the body of an answer: a short one as it is, a file as a stream of blocks.
/// @param way outlives the answer
/// @param fault what happens to the body: a cut, a chunked cut or a stall that has its bytes, a slow or a
///        corrupted body; nothing for a whole one
/// @return false when the body's file cannot be opened; nothing was set then
[[nodiscard]] bool SetBody(httplib::Response& out, const Response& answer, const AnswerWay& way,
                           const std::optional<FaultAction>& fault);

}  // namespace vantry_sim
