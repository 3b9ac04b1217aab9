#pragma once

#include "connection/server_context.h"
#include "documents/reading/document_records.h"

namespace lxservices::cms_interface::vantry {

/// Whether a document is a copy that only a workspace holds: the copy of a checkout by the connected user, or
/// a document that has never left a workspace. One GET on this thread.
/// @param answer  false unless the server's answer says otherwise
/// @return false when the question could not be answered; a failed search is traced
[[nodiscard]] bool IsWorkingCopy(ServerContext& server, const DocumentRecord& record, bool& answer);

}  // namespace lxservices::cms_interface::vantry
