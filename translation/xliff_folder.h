#pragma once

#include <rapidjson/document.h>

#include <string>

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// The folder that a source XLIFF is stored in, by its path. One GET a page, on this thread.
///
/// The count of the path's levels does not end for a path with an inner "/", which is every path that gets so
/// far: the search goes on from the slash that it found. The environment variable
/// FENLOOM_XLIFF_BOUNDED_FOLDER_SCAN moves it after that slash.
/// @param contextType  not used
/// @return empty when there is no such folder, and without a request for a path without an inner "/"
[[nodiscard]] std::string FindFolderByPath(ServerContext& server, const std::string& contextName,
                                           const std::string& contextType, const std::string& subFolderPath);

/// The id of a folder of that name and location in an expanded answer. The walk goes into the first element
/// that has folders and looks at none after it. Pure; the depth is that of the parsed document.
[[nodiscard]] std::string FindFolderInTree(const rapidjson::Value& array, const std::string& name,
                                           const std::string& location);

}  // namespace lxservices::cms_interface::vantry
