#include <string>
#include <utility>

#include "browsing/contexts.h"
#include "browsing/directory_listing.h"
#include "browsing/folder_contents.h"
#include "browsing/folder_tree.h"
#include "browsing/gateway_listing.h"
#include "browsing/vfs_tree.h"
#include "browsing/workspace_listing.h"

namespace lxservices::cms_interface::vantry {
namespace {

using Flags = ReadDirFlags;

DirLister OpenContexts(const std::shared_ptr<VtConnection>& connection, ServiceFlags& services,
                       ContextKind kind) {
  EnsureServiceFlags(services, *connection);
  return [connection, services, kind](const DirEntryCallback& callback, Flags flags) {
    return ListContexts(connection, services, kind, callback, flags);
  };
}

// The service's version is that of now, whatever the server object learns later.
DirLister OpenResource(const std::shared_ptr<VtConnection>& connection, bool isV5, std::string resource) {
  return [connection, isV5, resource = std::move(resource)](const DirEntryCallback& callback, Flags flags) {
    const bool details = (flags & Details) != 0;
    const bool versions = (flags & Versions) != 0;
    return isV5 ? ListODataFolderV5(connection, resource, callback, details, versions)
                : ListODataFolder(connection, resource, callback, details);
  };
}

DirLister OpenFolder(const std::shared_ptr<VtConnection>& connection, ServiceFlags& services,
                     const ParsedVfsPath& path) {
  if (!ForceLegacyFileBrowse()) {
    EnsureServiceFlags(services, *connection);
    if (services.folderContents) {
      const char* type = ODataTypeOf(path.kind);
      if (type == nullptr) return {};
      std::string resource = ResolveFolderResource(connection, path.context, type, path.folderPath);
      if (!resource.empty()) return OpenResource(connection, services.dataAdminV5, std::move(resource));
    }
  }
  return OpenGatewayFolder(connection, path.context, path.kind, path.folderPath);
}

DirLister OpenWorkspacesSection(const std::shared_ptr<VtConnection>& connection, ServiceFlags& services,
                                const ParsedVfsPath& path) {
  EnsureServiceFlags(services, *connection);
  const std::string contextId = ResolveContextId(connection, services, path.kind, path.context);
  if (contextId.empty()) return {};
  if (path.folderPath.empty()) {
    return [connection, contextId](const DirEntryCallback& callback, Flags flags) {
      return ListWorkspaceDirs(connection, contextId, callback, flags);
    };
  }
  const std::string workspaceId = FindWorkspaceIdByName(connection, WorkspaceNameOf(path), contextId);
  if (workspaceId.empty()) return {};
  return [connection, workspaceId](const DirEntryCallback& callback, Flags flags) {
    return ListWorkspaceFiles(connection, workspaceId, callback, flags);
  };
}

}  // namespace

DirLister OpenDirectory(const std::shared_ptr<VtConnection>& connection, ServiceFlags& services,
                        const char* path) {
  if (path == nullptr || *path == '\0') return ListRootDirs;
  const ParsedVfsPath parsed = SplitDirectoryPath(path);
  if (parsed.kind == ContextKind::None) return {};
  if (parsed.context.empty()) return OpenContexts(connection, services, parsed.kind);
  if (parsed.section.empty()) return ListSections;
  if (IsVfsName(parsed.section, VfsNameId::Folders)) return OpenFolder(connection, services, parsed);
  if (IsVfsName(parsed.section, VfsNameId::Workspaces)) {
    return OpenWorkspacesSection(connection, services, parsed);
  }
  return {};
}

}  // namespace lxservices::cms_interface::vantry
