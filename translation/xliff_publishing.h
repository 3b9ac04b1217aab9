#pragma once

#include <string>

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Marks a translated document as published: one PATCH on this thread.
/// @return true for 204, and for another success whose answer says "Success"; a refusal and an answer that is no
///         JSON are traced
[[nodiscard]] bool MarkPublished(ServerContext& server, const std::string& documentId);

}  // namespace lxservices::cms_interface::vantry
