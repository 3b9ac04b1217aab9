#pragma once

#include <string>

#include "connection/server_context.h"
#include "documents/reading/document_records.h"
#include "documents/reading/file_info.h"

namespace lxservices::cms_interface::vantry {

/// Checks a document out into the workspace that its id names, or into a temporary one made for it. Requests
/// run on this thread: the document, the workspace if it is to be made, the checkout; after a failed checkout
/// the temporary workspace is deleted.
/// @param id    a CheckoutId, plain or with a workspace
/// @param info  receives the summary with the CheckoutId of the working copy; left alone on failure
/// @return false, traced, when the document cannot be read or is checked out already, by whomever, and when a
///         request fails
[[nodiscard]] bool CheckoutDocument(ServerContext& server, const char* id, FileInfo& info);

/// The one POST of a checkout.
/// @param result    receives the working copy; an answer that is no JSON is traced, and leaves it empty
/// @param masterId  names the master that may be in the workspace already; null sends no resolution
/// @return whether the status was in 200 to 299; a refusal is traced
[[nodiscard]] bool PostCheckout(ServerContext& server, const std::string& workspaceId,
                                const std::string& documentId, DocumentRecord& result,
                                const std::string* masterId);

}  // namespace lxservices::cms_interface::vantry
