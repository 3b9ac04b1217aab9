#pragma once

#include <map>
#include <memory>
#include <string>

#include "server/file_server.h"

namespace lxservices::cms_interface {

/// From links, escaped name to address, to child name and object id. A link that cannot be resolved, or whose
/// target lies on another server, is traced and dropped. Makes requests for VFS paths, on this thread.
[[nodiscard]] std::map<std::string, std::string> ResolveSourceLinks(
    const std::shared_ptr<FileServer>& server, const std::map<std::string, std::string>& links);

}  // namespace lxservices::cms_interface
