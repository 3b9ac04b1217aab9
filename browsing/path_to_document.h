#pragma once

#include <string>

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// The id of the document that a path names: the newest version in a folder, or the one that the path names
/// after a "|"; the working copy for a path below a workspace, with its workspace. Makes requests, on this
/// thread, also for a path that can name no document: the server's services are settled first.
/// @param path  relative to the server
/// @return empty when there is no such document; traced, but for a section that holds none and for a version
///         that does not exist
[[nodiscard]] std::string ResolveDocumentPath(ServerContext& server, const std::string& path);

}  // namespace lxservices::cms_interface::vantry
