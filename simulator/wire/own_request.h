#pragma once

#include <httplib.h>

#include <string>

#include "simulator/wire/messages.h"
#include "simulator/wire/request_head.h"

namespace vantry_sim {

/// Whether a request announces a body.
bool HasBody(const httplib::Request& request);

/// Whether a request of this method may have a body.
bool TakesBody(const std::string& method);

/// Hides the type of a multipart body from the HTTP library, which would take the body apart: it reaches the routes
/// as it was sent.
void HideMultipartType(httplib::Request& request);

/// What the routes are handed of a request, without its body.
/// @param user  who sent it; empty for nobody that is known
Request OwnRequest(const httplib::Request& request, const RequestHead& head, const std::string& user);

}  // namespace vantry_sim
