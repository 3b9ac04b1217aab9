#pragma once

#include <string>

#include "browsing/dir_entry.h"
#include "connection/server_context.h"

/// The workspaces section of a context. Makes requests on this thread; nothing is cached or traced.
namespace lxservices::cms_interface::vantry {

/// Delivers the user's workspaces of a context as directories; temporary ones stay hidden. One GET, when
/// `flags` asks for directories; otherwise the result is true.
[[nodiscard]] bool ListWorkspaceDirs(ServerContext& server, const std::string& contextId,
                                     const DirEntryCallback& callback, ReadDirFlags flags);

/// Delivers the documents of a workspace as files. One GET, when `flags` asks for files; otherwise the result
/// is true.
[[nodiscard]] bool ListWorkspaceFiles(ServerContext& server, const std::string& workspaceId,
                                      const DirEntryCallback& callback, ReadDirFlags flags);

/// The id of the first workspace of a context with a name, temporary ones included: a working copy in one of
/// them can be addressed by its path though the listing hides it. One GET.
/// @return empty when there is none or the request failed
[[nodiscard]] std::string FindWorkspaceIdByName(ServerContext& server, const std::string& name,
                                                const std::string& contextId);

}  // namespace lxservices::cms_interface::vantry
