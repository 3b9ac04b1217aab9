#pragma once

#include <memory>
#include <string>

#include "public/manager_state.h"
#include "public/vt_direct_manager.h"
#include "server/file_server.h"

/// The first step of almost every exported function: from an address to a server and an object on it.
namespace lxservices::cms_interface {

/// What an address names, before any request. `server` is empty when resolution failed.
struct PathTarget {
  std::shared_ptr<FileServer> server;
  std::string nickname;      ///< from a VFS path
  std::string relativePath;  ///< from a VFS path
  std::string base;          ///< from a UID: its part before "?"
  std::string id;            ///< from a UID
  /// The list that the server was found in: an operation goes by the servers that it began with.
  std::shared_ptr<const ServerTable> table;
};

/// A server and an object on it. `server` is empty unless `id` is not.
struct FileTarget {
  std::shared_ptr<FileServer> server;
  std::string id;
};

enum ResolveFlags : unsigned {
  ResolveProbe = 2,   ///< the server must answer before the target counts as found
  ResolveNeedId = 4,  ///< ResolveFileTarget: anything but a UID with an id fails silently
  ResolveQuiet = 16,  ///< failures are traced as routine misses
};

/// Finds the server of an address, without a request unless `flags` holds ResolveProbe.
/// @param status  may be empty; called with StatusConnectFailed and null on a failure
/// @return an empty target on a failure, which is traced, and for null, which is not
[[nodiscard]] PathTarget ResolveTarget(const char* path, const VtDirectManager::StatusCallback& status,
                                       unsigned flags);

/// ResolveTarget for a further address of an operation that has begun, in the list that it began with.
[[nodiscard]] PathTarget ResolveTarget(const char* path, std::shared_ptr<const ServerTable> table);

/// Finds the server and the object of an address. Makes requests unless the address holds an id.
/// @param status  may be empty; called once on a failure that is traced
[[nodiscard]] FileTarget ResolveFileTarget(const char* path, const VtDirectManager::StatusCallback& status,
                                           unsigned flags);

/// The id of a target's object, or the empty text. A walk of the server unless the target holds one.
[[nodiscard]] std::string IdOfTarget(const PathTarget& target);

}  // namespace lxservices::cms_interface
