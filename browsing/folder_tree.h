#pragma once

#include <string>
#include <string_view>

#include "connection/server_context.h"

/// Folders by OData, which gives a whole subtree in one answer: a folder path is looked up in it, in memory.
/// Makes requests on this thread; nothing is cached or traced.
namespace lxservices::cms_interface::vantry {

/// The resource of a folder, as OData paths hold it: "Containers('C100')/Folders('F1')/Folders('F2')".
///
/// The first folder of it is the root folder, which a folder path does not name; an empty path gives the root
/// folder itself. Of several roots that hold the path, the one named "Default" is taken. One GET a page.
/// @param type        the OData type of the context's kind
/// @param folderPath  components separated by "/", compared exactly; empty ones don't count
/// @return empty when there is no such folder; after a failed page, what was found before it
[[nodiscard]] std::string ResolveFolderResource(ServerContext& server, const std::string& contextName,
                                                std::string_view type, const std::string& folderPath);

}  // namespace lxservices::cms_interface::vantry
