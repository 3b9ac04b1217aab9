#pragma once

#include <string>

#include "connection/server_context.h"

/// The ids of folders that documents are to be created in. Makes requests on this thread; nothing is cached
/// or traced. An empty path gives the empty text and sends nothing.
namespace lxservices::cms_interface::vantry {

/// The id of a folder by OData. Of several root folders that hold the path, the one named "Default" is taken.
/// One GET a page.
/// @param containerId  id of the context; goes into the path as it is
/// @return empty when there is no such folder; after a failed page, what was found before it
[[nodiscard]] std::string FindFolderIdOData(ServerContext& server, const std::string& containerId,
                                            const std::string& folderPath);

/// The id of a folder by REST, for servers without the OData service. One GET a component.
///
/// A component that is not found is passed over: the result is the deepest folder that was.
/// @return empty when not even the first component is found, and when a request failed
[[nodiscard]] std::string FindFolderIdRest(ServerContext& server, const std::string& contextId,
                                           const std::string& folderPath);

}  // namespace lxservices::cms_interface::vantry
