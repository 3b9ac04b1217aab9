#pragma once

#include <memory>

#include "browsing/dir_entry.h"
#include "connection/service_flags.h"
#include "connection/vt_connection.h"

/// The tree of a server, by path. Which service lists a folder depends on what the server has, which is found
/// out when it is first needed. Makes requests on this thread; nothing is traced.
namespace lxservices::cms_interface::vantry {

/// Delivers the four root directories if directories are asked for. True; no request.
[[nodiscard]] bool ListRootDirs(const DirEntryCallback& callback, ReadDirFlags flags);

/// Delivers the two sections of a context if directories are asked for. True; no request.
[[nodiscard]] bool ListSections(const DirEntryCallback& callback, ReadDirFlags flags);

/// Lists a directory.
/// @param services  settled as far as the path needs it
/// @return false for a path that names no directory and when a request failed; what was delivered before
///         stays delivered
[[nodiscard]] bool ListDirectory(const std::shared_ptr<VtConnection>& connection, ServiceFlags& services,
                                 const char* path, const DirEntryCallback& callback, ReadDirFlags flags);

/// Resolves a directory now, to list it later without repeating that. The lister shares the connection.
/// @param services  settled as far as the path needs it; the lister keeps a copy of what it goes by
/// @return empty for a path that names no directory or cannot be reached
[[nodiscard]] DirLister OpenDirectory(const std::shared_ptr<VtConnection>& connection, ServiceFlags& services,
                                      const char* path);

}  // namespace lxservices::cms_interface::vantry
