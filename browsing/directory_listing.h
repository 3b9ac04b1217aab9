#pragma once

#include <string_view>

#include "browsing/dir_entry.h"
#include "connection/server_context.h"

/// The tree of a server, by path. Which service lists a folder depends on what the server has, which is found
/// out when it is first needed. Makes requests on this thread; nothing is traced.
namespace lxservices::cms_interface::vantry {

/// Delivers the four root directories if directories are asked for. True; no request.
[[nodiscard]] bool ListRootDirs(const DirEntryCallback& callback, ReadDirFlags flags);

/// Delivers the two sections of a context if directories are asked for. True; no request.
[[nodiscard]] bool ListSections(const DirEntryCallback& callback, ReadDirFlags flags);

/// Lists a directory.
/// @return false for a path that names no directory and when a request failed; what was delivered before
///         stays delivered
[[nodiscard]] bool ListDirectory(ServerContext& server, std::string_view path,
                                 const DirEntryCallback& callback, ReadDirFlags flags);

/// Resolves a directory now, to list it later without repeating that. The lister shares the connection, goes
/// by the services that the server has now, and may be called on several threads at once.
/// @return empty for a path that names no directory or cannot be reached
[[nodiscard]] DirLister OpenDirectory(ServerContext& server, std::string_view path);

}  // namespace lxservices::cms_interface::vantry
