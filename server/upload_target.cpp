#include "server/upload_target.h"

#include <string>
#include <utility>

#include "base/failure_trace.h"
#include "browsing/contexts.h"
#include "browsing/folder_ids.h"
#include "browsing/vfs_tree.h"
#include "browsing/workspace_listing.h"
#include "documents/storing/document_storing.h"

namespace lxservices::cms_interface::vantry {
namespace {

Result<FileInfo> UploadIntoWorkspace(ServerContext& server, const ParsedVfsPath& target,
                                     const std::string& contextId, const DocumentUploadParams& params,
                                     ProgressFunction progress) {
  const FailureStep step("find the workspace");
  const FailureMark mark;
  const std::string workspace = FindWorkspaceIdByName(server, target.folderPath, contextId);
  if (workspace.empty()) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(
        dp::TraceType::Error, "Failed to locate workspace %s in context %s on server\n",
        target.folderPath.c_str(), contextId.c_str());
    return Refused;
  }
  return CreateDocumentInWorkspace(server, {target.leaf, contextId, {}, workspace}, params,
                                   std::move(progress));
}

std::string FindFolder(ServerContext& server, const std::string& contextId, const std::string& folderPath) {
  return server.Services().dataAdminPresent ? FindFolderIdOData(server, contextId, folderPath)
                                            : FindFolderIdRest(server, contextId, folderPath);
}

}  // namespace

Result<FileInfo> UploadNewDocument(ServerContext& server, const std::string& targetPath,
                                   const DocumentUploadParams& params, ProgressFunction progress) {
  const FailureStep step("create the document");
  const FailureMark mark;
  const ParsedVfsPath target = SplitFilePath(targetPath);
  const std::string contextId = ResolveContextId(server, target.kind, target.context);
  if (contextId.empty()) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(
        dp::TraceType::Error, "Failed to locate context %s on server\n", target.context.c_str());
    return Refused;
  }
  if (IsVfsName(target.section, VfsNameId::Workspaces)) {
    return UploadIntoWorkspace(server, target, contextId, params, std::move(progress));
  }
  if (!IsVfsName(target.section, VfsNameId::Folders)) {
    // "most" is what has always been in this line; logs are searched for it.
    TracerFor({FailureKind::NotFound})(
        dp::TraceType::Error, "A target folder most be specified (where %s was given)\n", targetPath.c_str());
    return NotFound;
  }
  const std::string folderId = FindFolder(server, contextId, target.folderPath);
  return CreateDocument(server, {target.leaf, contextId, folderId, {}}, params, std::move(progress));
}

}  // namespace lxservices::cms_interface::vantry
