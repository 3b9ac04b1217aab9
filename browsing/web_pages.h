#pragma once

#include <string>

#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// Addresses of the server's own web pages. They are built for the host to show, and never fetched.
namespace lxservices::cms_interface::vantry {

/// The page that tells of a document. No request; the id is not checked.
/// @param id  a CheckoutId or a plain id, of which the first field counts
/// @return empty for a connection without a URL
[[nodiscard]] std::string InformationPage(const ServerContext& server, const char* id);

/// The page that edits the attributes of a document in a workspace. Two GETs on this thread; none for an id
/// without a workspace.
/// @return empty on failure, traced
[[nodiscard]] std::string AttributesPage(ServerContext& server, const char* id);

/// Finds a workspace of a context by its id, temporary ones included. One GET on this thread.
/// @param workspace  left alone on failure
/// @return false when the list failed or does not hold it, traced
[[nodiscard]] bool FindWorkspaceById(ServerContext& server, const std::string& workspaceId,
                                     const std::string& contextId, WorkspaceRecord& workspace);

}  // namespace lxservices::cms_interface::vantry
