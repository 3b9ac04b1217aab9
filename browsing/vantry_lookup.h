#pragma once

#include <string>

#include "connection/server_context.h"

/// Ids for what a host knows of a document by other means. Makes requests, on this thread.
namespace lxservices::cms_interface::vantry {

/// The id of a document that the server knows by its own id, in a workspace.
///
/// Without a workspace a working copy of the connected user is looked up in the user's workspaces, and any
/// other document gives its id as it is.
/// @param workspaceId  null or empty for none; otherwise it must be a workspace of the user's
/// @return empty on failure, traced
[[nodiscard]] std::string FindIdInWorkspace(ServerContext& server, const char* documentId,
                                            const char* workspaceId);

/// The id of the newest version of the first document with a CAD name. The server's services are settled
/// first.
/// @param cadName  plain; null gives the empty text without a request
/// @return empty on failure, traced
[[nodiscard]] std::string FindLatestIdByCadName(ServerContext& server, const char* cadName);

}  // namespace lxservices::cms_interface::vantry
