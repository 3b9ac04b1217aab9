#pragma once

#include <optional>
#include <string>

#include "base/checkout_id.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"
#include "documents/reading/file_info.h"

namespace lxservices::cms_interface::vantry {

/// Throws a working copy away. Requests on this thread: for a temporary checkout a look whether the workspace
/// holds it, the undo, for a temporary checkout the deletion of the workspace, and the document when the undo
/// gave none back.
/// @param id  must be valid for a checkout operation
/// @return the summary: with a plain id after a temporary checkout, else with the workspace. Nothing, traced,
///         when the id is not valid, when an undo in a workspace of the user's is refused, and when the
///         document cannot be read afterwards. A refused undo in a temporary workspace is only traced: the
///         workspace goes all the same.
[[nodiscard]] std::optional<FileInfo> UndoCheckoutDocument(ServerContext& server, const CheckoutId& id);

/// The one POST of an undo.
/// @return the document as it was before, blank when the answer is no JSON; nothing, traced, for a status
///         outside 200 to 299
[[nodiscard]] std::optional<DocumentRecord> PostUndoCheckout(ServerContext& server,
                                                             const std::string& workspaceId,
                                                             const std::string& documentId);

}  // namespace lxservices::cms_interface::vantry
