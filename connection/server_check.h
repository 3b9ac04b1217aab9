#pragma once

#include <memory>
#include <string>

#include "base/status.h"
#include "connection/vt_connection.h"

namespace lxservices::cms_interface::vantry {

/// Whether a server gives useful data: its document service's schema, or else its list of contexts. Up to two
/// GETs on this thread.
/// @return Ok, Unauthorized for a 401 on the list, ConnectionFailed for every other failure
Status ProbeConnection(const std::shared_ptr<VtConnection>& connection);

/// Whether the library can serve the server at `url`: reads its version, compares it with the minimum,
/// follows the address that the server calls its own, and probes it. Works on connections of its own, on this
/// thread.
/// @param redirect  may be null, and then the server's own address is not looked at. Receives the address to
///                  use instead of `url`; empty when `url` is to be used. A server that fails before its
///                  address is looked at leaves it as it was.
/// @return Ok, ConnectionFailed, Unsupported for too low a version, or what the probe gave; each failure
///         is traced
Status CheckServer(const char* url, const AuthFunction& auth, std::string* redirect);

}  // namespace lxservices::cms_interface::vantry
