#include "browsing/workspace_listing.h"

#include "base/failure_step.h"
#include "browsing/dir_entry.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {

bool ListWorkspaceDirs(ServerContext& server, const std::string& contextId, const DirEntryCallback& callback,
                       ReadDirFlags flags) {
  if ((flags & Directories) == 0) return true;
  WorkspaceList workspaces;
  if (!ListUserWorkspaces(server, contextId, workspaces)) return false;
  for (const WorkspaceRecord& workspace : workspaces) EmitDirEntry(callback, workspace.name, "", true);
  return true;
}

bool ListWorkspaceFiles(ServerContext& server, const std::string& workspaceId,
                        const DirEntryCallback& callback, ReadDirFlags flags) {
  if ((flags & Files) == 0) return true;
  DocumentList documents;
  if (!ListWorkspaceDocuments(server, workspaceId, documents)) return false;
  for (const DocumentSummary& document : documents) {
    EmitDirEntry(callback, document.master.cadName, "", false);
  }
  return true;
}

std::string FindWorkspaceIdByName(ServerContext& server, const std::string& name,
                                  const std::string& contextId) {
  const FailureStep step("find the workspace");
  WorkspaceList workspaces;
  if (!ListWorkspaces(server, contextId, workspaces)) return {};
  for (const WorkspaceRecord& workspace : workspaces) {
    if (workspace.name == name) return workspace.id;
  }
  return {};
}

}  // namespace lxservices::cms_interface::vantry
