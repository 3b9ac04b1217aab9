#pragma once

#include <string>

#include "connection/server_context.h"
#include "documents/reading/document_records.h"
#include "documents/reading/file_info.h"

namespace lxservices::cms_interface::vantry {

/// Makes a working copy the document's next iteration: one POST, and for a temporary checkout a second one
/// that deletes the workspace. On this thread.
/// @param checkoutId  must be valid for a checkout operation
/// @param info        receives the summary: with a plain id after a temporary checkout, else with the
///                    workspace
/// @return false, traced, when the id is not valid or the check-in is refused; the working copy then stays and
///         the same id can be used again. A workspace that cannot be deleted is traced and no failure.
[[nodiscard]] bool CheckinDocument(ServerContext& server, const char* checkoutId, FileInfo& info);

/// The one POST of a check-in.
/// @param comment              may be null
/// @param removeFromWorkspace  takes the document out of the workspace
/// @param result               may be null; receives the checked-in document
/// @return whether the status was in 200 to 299; a refusal is traced
[[nodiscard]] bool PostCheckin(ServerContext& server, const std::string& workspaceId,
                               const std::string& documentId, const char* comment, bool removeFromWorkspace,
                               DocumentRecord* result);

}  // namespace lxservices::cms_interface::vantry
