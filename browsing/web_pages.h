#pragma once

#include <optional>
#include <string>

#include "base/checkout_id.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// Addresses of the server's own web pages. They are built for the host to show, and never fetched.
namespace lxservices::cms_interface::vantry {

/// The page that tells of a document. No request; the id is not checked.
/// @param id  its document counts
/// @return empty for a connection without a URL
[[nodiscard]] std::string InformationPage(const ServerContext& server, const CheckoutId& id);

/// The page that edits the attributes of a document in a workspace. Two GETs on this thread; none for an id
/// without a workspace.
/// @return empty on failure, traced
[[nodiscard]] std::string AttributesPage(ServerContext& server, const CheckoutId& id);

/// Finds a workspace of a context by its id, temporary ones included. One GET on this thread.
/// @return nothing, traced, when the list failed or does not hold it
[[nodiscard]] std::optional<WorkspaceRecord> FindWorkspaceById(ServerContext& server,
                                                               const std::string& workspaceId,
                                                               const std::string& contextId);

}  // namespace lxservices::cms_interface::vantry
