#pragma once

#include <httplib.h>

#include "simulator/wire/connection_stream.h"

namespace vantry_sim {

/// Answers a head that isn't served, as far as that can be done without waiting: 408 for one that took too
/// long, 431 for one without an end, 503 where there is no room.
void SendRefusal(ConnectionStream& stream, int status);

/// Gives a reason to refusals that the HTTP library made itself, such as those of an unreadable head.
void GiveReason(const httplib::Request& request, httplib::Response& response);

}  // namespace vantry_sim
