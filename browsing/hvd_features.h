#pragma once

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Reads two of the server's feature switches; of several values the last wins. Makes requests, on this
/// thread. A page that fails ends
/// it, and what was read before stays.
/// @return the switches; one that the server says nothing of is as it was known
[[nodiscard]] ServerFeatures ReadHvdFeatures(ServerContext& server, ServerFeatures known = {});

}  // namespace lxservices::cms_interface::vantry
