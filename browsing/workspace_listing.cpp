#include "browsing/workspace_listing.h"

#include "base/failure_step.h"
#include "browsing/dir_entry.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {

bool ListWorkspaceDirs(ServerContext& server, const std::string& contextId, const DirEntryCallback& callback,
                       ReadDirFlags flags) {
  if ((flags & Directories) == 0) return true;
  const auto workspaces = ListUserWorkspaces(server, contextId);
  if (!workspaces) return false;
  for (const WorkspaceRecord& workspace : *workspaces) {
    EmitDirEntry(callback, workspace.name, "", EntryKind::Directory);
  }
  return true;
}

bool ListWorkspaceFiles(ServerContext& server, const std::string& workspaceId,
                        const DirEntryCallback& callback, ReadDirFlags flags) {
  if ((flags & Files) == 0) return true;
  const auto documents = ListWorkspaceDocuments(server, workspaceId);
  if (!documents) return false;
  for (const DocumentSummary& document : *documents) {
    EmitDirEntry(callback, document.master.cadName, "", EntryKind::File);
  }
  return true;
}

std::string FindWorkspaceIdByName(ServerContext& server, const std::string& name,
                                  const std::string& contextId) {
  const FailureStep step("find the workspace");
  const auto workspaces = ListWorkspaces(server, contextId);
  if (!workspaces) return {};
  for (const WorkspaceRecord& workspace : *workspaces) {
    if (workspace.name == name) return workspace.id;
  }
  return {};
}

}  // namespace lxservices::cms_interface::vantry
