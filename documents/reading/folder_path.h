#pragma once

#include <optional>
#include <string>

#include "documents/reading/document_records.h"

namespace lxservices::cms_interface::vantry {

/// Where a document is among the folders of its context, without the context itself. Pure.
///
/// "/Gadget/Sub/Deep" in the context "Gadget" gives "/Sub/Deep". A document directly under the context has a
/// path only when its folder is the context's cabinet; any other is in no folder, such as one that has
/// never left a workspace.
/// @return nothing when the document is in no folder of its context
[[nodiscard]] std::optional<std::string> GetFolderPathInContext(const DocumentRecord& record);

}  // namespace lxservices::cms_interface::vantry
