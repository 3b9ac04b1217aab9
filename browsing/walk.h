#pragma once

#include <memory>
#include <string_view>

#include "browsing/walked_directory.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Resolves a directory now, to walk on from it: each folder that its listing delivers is listed by what that
/// listing told, and is not looked for. By OData that is the folder's id, by the gateway its context. The
/// workspaces, and all above the folders of a context, are looked up by their paths. Makes the requests of
/// OpenDirectory.
/// @return null for a path that names no directory or cannot be reached
[[nodiscard]] std::shared_ptr<WalkedDirectory> OpenWalk(ServerContext& server, std::string_view path);

}  // namespace lxservices::cms_interface::vantry
