#pragma once

#include <optional>

#include "connection/server_context.h"
#include "documents/reading/document_records.h"

namespace lxservices::cms_interface::vantry {

/// Whether a document is a copy that only a workspace holds: the copy of a checkout by the connected user, or
/// a document that has never left a workspace. One GET on this thread.
/// @return nothing when the question could not be answered; a failed search is traced
[[nodiscard]] std::optional<bool> IsWorkingCopy(ServerContext& server, const DocumentRecord& record);

}  // namespace lxservices::cms_interface::vantry
