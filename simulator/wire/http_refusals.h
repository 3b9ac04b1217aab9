#pragma once

#include <httplib.h>

#include "simulator/wire/connection_stream.h"

namespace vantry_sim {

/// Answers a head that has no end in sight: the HTTP library gives up on such a one without a word.
void SendHeadTooLong(ConnectionStream& stream);

/// Gives a reason to refusals that the HTTP library made itself, such as those of an unreadable head.
void GiveReason(const httplib::Request& request, httplib::Response& response);

}  // namespace vantry_sim
