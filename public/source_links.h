#pragma once

#include <map>
#include <string>

#include "public/path_resolution.h"

namespace lxservices::cms_interface {

/// From links, escaped name to address, to child name and object id. A link that cannot be resolved, or whose
/// target lies on another server, is traced and dropped. Makes requests for VFS paths, on this thread.
/// @param document  what is uploaded to: its server counts, and the list that it was found in
[[nodiscard]] std::map<std::string, std::string> ResolveSourceLinks(
    const PathTarget& document, const std::map<std::string, std::string>& links);

}  // namespace lxservices::cms_interface
