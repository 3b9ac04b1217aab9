#include <string>
#include <string_view>
#include <utility>

#include "base/failure_step.h"
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

// A lister goes by the services that opening went by, whatever is learned later: each of its calls is an
// operation that goes on from there.
DirLister OpenContexts(ServerContext& server, ContextKind kind) {
  server.SettleServices();
  return [opened = server, kind](const DirEntryCallback& callback, Flags flags) {
    ServerContext now = opened.NextOperation();
    return ListContexts(now, kind, callback, flags);
  };
}

DirLister OpenResource(const ServerContext& server, std::string resource) {
  return [opened = server, resource = std::move(resource)](const DirEntryCallback& callback, Flags flags) {
    ServerContext now = opened.NextOperation();
    const bool details = (flags & Details) != 0;
    const bool versions = (flags & Versions) != 0;
    return now.Services().dataAdminV5 ? ListODataFolderV5(now, resource, callback, details, versions)
                                      : ListODataFolder(now, resource, callback, details);
  };
}

DirLister OpenFolder(ServerContext& server, const ParsedVfsPath& path) {
  if (!ForceLegacyFileBrowse()) {
    if (server.Services().folderContents) {
      const std::string_view type = ODataTypeOf(path.kind);
      if (type.empty()) return {};
      std::string resource = ResolveFolderResource(server, path.context, type, path.folderPath);
      if (!resource.empty()) return OpenResource(server, std::move(resource));
    }
  }
  return OpenGatewayFolder(server, {path.context, path.kind, path.folderPath});
}

DirLister OpenWorkspacesSection(ServerContext& server, const ParsedVfsPath& path) {
  const std::string contextId = ResolveContextId(server, path.kind, path.context);
  if (contextId.empty()) return {};
  if (path.folderPath.empty()) {
    return [opened = server, contextId](const DirEntryCallback& callback, Flags flags) {
      ServerContext now = opened.NextOperation();
      return ListWorkspaceDirs(now, contextId, callback, flags);
    };
  }
  const std::string workspaceId = FindWorkspaceIdByName(server, WorkspaceNameOf(path), contextId);
  if (workspaceId.empty()) return {};
  return [opened = server, workspaceId](const DirEntryCallback& callback, Flags flags) {
    ServerContext now = opened.NextOperation();
    return ListWorkspaceFiles(now, workspaceId, callback, flags);
  };
}

}  // namespace

DirLister OpenDirectory(ServerContext& server, std::string_view path) {
  const FailureStep step("open the directory");
  if (path.empty()) return ListRootDirs;
  const ParsedVfsPath parsed = SplitDirectoryPath(path);
  if (parsed.kind == ContextKind::None) return {};
  if (parsed.context.empty()) return OpenContexts(server, parsed.kind);
  if (parsed.section.empty()) return ListSections;
  if (IsVfsName(parsed.section, VfsNameId::Folders)) return OpenFolder(server, parsed);
  if (IsVfsName(parsed.section, VfsNameId::Workspaces)) {
    return OpenWorkspacesSection(server, parsed);
  }
  return {};
}

}  // namespace lxservices::cms_interface::vantry
