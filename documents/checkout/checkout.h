#pragma once

#include <optional>
#include <string>

#include "base/checkout_id.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"
#include "documents/reading/file_info.h"

namespace lxservices::cms_interface::vantry {

/// Checks a document out into the workspace that its id names, or into a temporary one made for it. Requests
/// run on this thread: the document, the workspace if it is to be made, the checkout; after a failed checkout
/// the temporary workspace is deleted.
/// @param id  plain or with a workspace
/// @return the summary with the CheckoutId of the working copy; nothing, traced, when the document cannot be
///         read or is checked out already, by whomever, and when a request fails
[[nodiscard]] std::optional<FileInfo> CheckoutDocument(ServerContext& server, const CheckoutId& id);

/// The one POST of a checkout.
/// @param masterId  names the master that may be in the workspace already; none sends no resolution
/// @return the working copy, blank, and traced, when the answer is no JSON; nothing, traced, for a status
///         outside 200 to 299
[[nodiscard]] std::optional<DocumentRecord> PostCheckout(ServerContext& server,
                                                         const std::string& workspaceId,
                                                         const std::string& documentId,
                                                         const std::optional<std::string>& masterId);

}  // namespace lxservices::cms_interface::vantry
