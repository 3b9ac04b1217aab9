#pragma once

#include <string>

#include "connection/server_context.h"
#include "documents/reading/document_records.h"
#include "documents/reading/file_info.h"

namespace lxservices::cms_interface::vantry {

/// Throws a working copy away. Requests on this thread: for a temporary checkout a look whether the workspace
/// holds it, the undo, for a temporary checkout the deletion of the workspace, and the document when the undo
/// gave none back.
/// @param checkoutId  must be valid for a checkout operation
/// @param info        receives the summary: with a plain id after a temporary checkout, else with the
///                    workspace
/// @return false, traced, when the id is not valid, when an undo in a workspace of the user's is refused, and
///         when the document cannot be read afterwards. A refused undo in a temporary workspace is only
///         traced: the workspace goes all the same.
[[nodiscard]] bool UndoCheckoutDocument(ServerContext& server, const char* checkoutId, FileInfo& info);

/// The one POST of an undo.
/// @param result  may be null; receives the document as it was before
/// @return whether the status was in 200 to 299; a refusal is traced
[[nodiscard]] bool PostUndoCheckout(ServerContext& server, const std::string& workspaceId,
                                    const std::string& documentId, DocumentRecord* result);

}  // namespace lxservices::cms_interface::vantry
