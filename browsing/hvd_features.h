#pragma once

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Reads two of the server's feature switches; of several values the last wins. Makes requests, on this
/// thread.
/// @param separatedSources  set or cleared by what the server says; left alone when it says nothing
/// @param vcsInfo           likewise
/// @return false when a page failed
[[nodiscard]] bool ReadHvdFeatures(ServerContext& server, bool& separatedSources, bool& vcsInfo);

}  // namespace lxservices::cms_interface::vantry
