#pragma once

#include <string>

#include "connection/server_context.h"

/// Ids for what a host knows of a document by other means. Makes requests, on this thread.
namespace lxservices::cms_interface::vantry {

/// The id of a document that the server knows by its own id, in a workspace.
///
/// Without a workspace a working copy of the connected user is looked up in the user's workspaces, and any
/// other document gives its id as it is.
/// @param workspaceId  empty for none; otherwise it must be a workspace of the user's
/// @return empty on failure, traced
[[nodiscard]] std::string FindIdInWorkspace(ServerContext& server, const std::string& documentId,
                                            const std::string& workspaceId);

/// The id of the newest version of the first document with a CAD name. The server's services are settled
/// first.
/// @param cadName  plain
/// @return empty on failure, traced
[[nodiscard]] std::string FindLatestIdByCadName(ServerContext& server, const std::string& cadName);

}  // namespace lxservices::cms_interface::vantry
