#pragma once

#include <string>
#include <string_view>

#include "browsing/dir_entry.h"
#include "connection/server_context.h"

/// Contexts by the OData service, which calls them containers. Each call makes one GET a page, on this
/// thread; nothing is cached or traced.
namespace lxservices::cms_interface::vantry {

/// The id of the one container with a name.
/// @param name  an apostrophe in it is not doubled
/// @param type  the OData type to look among; empty means all
/// @return empty when there is none, and when there are several
[[nodiscard]] std::string FindContainerId(ServerContext& server, const std::string& name,
                                          std::string_view type);

/// Delivers the containers of a type as directories.
/// @return false when a page failed; what was delivered before stays delivered
[[nodiscard]] bool ListContainers(ServerContext& server, std::string_view type,
                                  const DirEntryCallback& callback);

}  // namespace lxservices::cms_interface::vantry
