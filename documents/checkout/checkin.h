#pragma once

#include <optional>
#include <string>

#include "base/checkout_id.h"
#include "connection/server_context.h"
#include "documents/reading/document_records.h"
#include "documents/reading/file_info.h"

namespace lxservices::cms_interface::vantry {

/// Makes a working copy the document's next iteration: one POST, and for a temporary checkout a second one
/// that deletes the workspace. On this thread.
/// @param id  must be valid for a checkout operation
/// @return the summary: with a plain id after a temporary checkout, else with the workspace. Nothing, traced,
///         when the id is not valid or the check-in is refused; the working copy then stays and the same id
///         can be used again. A workspace that cannot be deleted is traced and no failure.
[[nodiscard]] std::optional<FileInfo> CheckinDocument(ServerContext& server, const CheckoutId& id);

/// What becomes of a document's place in the workspace when it is checked in.
enum class AfterCheckin { StaysInWorkspace, LeavesWorkspace };

/// The one POST of a check-in.
/// @param comment  none leaves the member out
/// @return the checked-in document, blank when the answer is no JSON; nothing, traced, for a status outside
///         200 to 299
[[nodiscard]] std::optional<DocumentRecord> PostCheckin(ServerContext& server, const std::string& workspaceId,
                                                        const std::string& documentId, AfterCheckin after,
                                                        const std::optional<std::string>& comment = {});

}  // namespace lxservices::cms_interface::vantry
