#pragma once

#include <memory>
#include <string>

#include "browsing/walked_directory.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// A folder that is listed by OData, from which a walk begins. Sends nothing.
///
/// A listing asks for the folders in the folder together with the folders in those, so that the walk needs not
/// ask again on the next level: each second level of a tree costs no such request, and a folder without
/// folders none at all. What was told so is used for one listing; a second one of the same folder asks.
/// @param path      as the tree holds it, with its closing "/"; by it the folder is looked up again when the
///                  server does not find it any more
/// @param resource  as ResolveFolderResource gives it
[[nodiscard]] std::shared_ptr<WalkedDirectory> BeginWalkAtFolder(const ServerContext& server,
                                                                 std::string path, std::string resource);

/// A directory that is looked up by its path whenever it is listed. Sends nothing.
[[nodiscard]] std::shared_ptr<WalkedDirectory> WalkedByPath(const ServerContext& server, std::string path);

}  // namespace lxservices::cms_interface::vantry
