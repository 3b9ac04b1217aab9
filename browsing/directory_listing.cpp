#include "browsing/directory_listing.h"

#include <initializer_list>
#include <string>
#include <string_view>

#include "base/failure_step.h"
#include "browsing/contexts.h"
#include "browsing/dir_entry.h"
#include "browsing/folder_contents.h"
#include "browsing/folder_tree.h"
#include "browsing/gateway_listing.h"
#include "browsing/vfs_tree.h"
#include "browsing/workspace_listing.h"

namespace lxservices::cms_interface::vantry {
namespace {

bool ListNames(std::initializer_list<VfsNameId> names, const DirEntryCallback& callback, ReadDirFlags flags) {
  if ((flags & Directories) == 0) return true;
  for (const VfsNameId name : names) EmitDirEntry(callback, LocalisedVfsName(name), "", EntryKind::Directory);
  return true;
}

// One listing of one directory, with what all its steps need.
struct Listing {
  ServerContext& server;
  const DirEntryCallback& callback;
  ReadDirFlags flags;
};

bool ListResource(const Listing& listing, const std::string& resource) {
  const bool details = (listing.flags & Details) != 0;
  const bool versions = (listing.flags & Versions) != 0;
  if (listing.server.Services().dataAdminV5) {
    return ListODataFolderV5(listing.server, resource, listing.callback, details, versions);
  }
  return ListODataFolder(listing.server, resource, listing.callback, details);
}

// By OData where the server has it and the folder is found there; all others are listed by the gateway.
bool ListFolder(const Listing& listing, const ParsedVfsPath& path) {
  if (!ForceLegacyFileBrowse()) {
    if (listing.server.Services().folderContents) {
      const std::string_view type = ODataTypeOf(path.kind);
      if (type.empty()) return false;
      const std::string resource = ResolveFolderResource(listing.server, path.context, type, path.folderPath);
      if (!resource.empty()) return ListResource(listing, resource);
    }
  }
  const GatewayFolder folder{path.context, path.kind, path.folderPath};
  return ListGatewayFolder(listing.server, folder, listing.callback, listing.flags);
}

bool ListWorkspacesSection(const Listing& listing, const ParsedVfsPath& path) {
  const std::string contextId = ResolveContextId(listing.server, path.kind, path.context);
  if (contextId.empty()) return false;
  if (path.folderPath.empty()) {
    return ListWorkspaceDirs(listing.server, contextId, listing.callback, listing.flags);
  }
  const std::string workspaceId = FindWorkspaceIdByName(listing.server, WorkspaceNameOf(path), contextId);
  return !workspaceId.empty() &&
         ListWorkspaceFiles(listing.server, workspaceId, listing.callback, listing.flags);
}

}  // namespace

bool ListRootDirs(const DirEntryCallback& callback, ReadDirFlags flags) {
  return ListNames({VfsNameId::Products, VfsNameId::Libraries, VfsNameId::Projects, VfsNameId::Sites},
                   callback, flags);
}

bool ListSections(const DirEntryCallback& callback, ReadDirFlags flags) {
  return ListNames({VfsNameId::Folders, VfsNameId::Workspaces}, callback, flags);
}

bool ListDirectory(ServerContext& server, std::string_view path, const DirEntryCallback& callback,
                   ReadDirFlags flags) {
  const FailureStep step("list the directory");
  if (path.empty()) return ListRootDirs(callback, flags);
  const Listing listing{server, callback, flags};
  const ParsedVfsPath parsed = SplitDirectoryPath(path);
  if (parsed.kind == ContextKind::None) return false;
  if (parsed.context.empty()) {
    server.SettleServices();
    return ListContexts(server, parsed.kind, callback, flags);
  }
  if (parsed.section.empty()) return ListSections(callback, flags);
  if (IsVfsName(parsed.section, VfsNameId::Folders)) return ListFolder(listing, parsed);
  if (IsVfsName(parsed.section, VfsNameId::Workspaces)) return ListWorkspacesSection(listing, parsed);
  return false;
}

}  // namespace lxservices::cms_interface::vantry
