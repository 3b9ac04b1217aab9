#pragma once

#include <string_view>

#include "connection/server_context.h"

/// What can be done at a path. Each gives false for an empty path, and splits the path as a file's.
namespace lxservices::cms_interface::vantry {

/// Whether documents can be created there: below a folders section, and in a workspace but not beside it. No
/// request.
[[nodiscard]] bool IsPathWritable(std::string_view path);

/// Whether a listing shows details: below a folders section that is browsed by OData. Settles the server's
/// services for such a path.
[[nodiscard]] bool CanPathShowDetails(ServerContext& server, std::string_view path);

/// Whether a listing shows versions, which takes version 5 of the service. Settles the server's services for
/// such a path.
[[nodiscard]] bool CanPathShowVersions(ServerContext& server, std::string_view path);

}  // namespace lxservices::cms_interface::vantry
