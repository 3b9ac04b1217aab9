#pragma once

#include <string>

#include "browsing/context_kind.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Finds the newest version of a document by its CAD name in a folder: in the folder itself where the server
/// can list folders by OData, else in the context, whatever its folder. Makes requests, on this thread.
/// @param cadName     plain
/// @param folderPath  below the context, components separated by "/"
/// @return the id, without a workspace; empty when there is none, traced
[[nodiscard]] std::string FindFileInFolder(ServerContext& server, const std::string& cadName,
                                           const std::string& folderPath, ContextKind kind,
                                           const std::string& contextName);

}  // namespace lxservices::cms_interface::vantry
