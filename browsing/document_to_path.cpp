#include "browsing/document_to_path.h"

#include <algorithm>

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/file_name.h"
#include "base/text.h"
#include "browsing/context_kind.h"
#include "browsing/document_details.h"
#include "browsing/vfs_tree.h"
#include "documents/reading/document_reads.h"
#include "documents/reading/folder_path.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Root, context and section of the document's path; empty for a context that no root directory leads to.
std::string SectionPath(const DocumentRecord& record, VfsNameId section) {
  const std::string root = RootOfKind(KindOfRestWord(record.contextType.c_str()));
  if (root.empty()) return {};
  return root + "/" + record.contextName + "/" + LocalisedVfsName(section);
}

std::string PathInWorkspace(ServerContext& server, const DocumentRecord& record,
                            const std::string& workspaceId, const char* id, bool folderOnly) {
  const FailureStep step("find the path");
  WorkspaceList workspaces;
  if (!ListUserWorkspaces(server, record.contextId, workspaces)) {
    TracerFor(Follows())(dp::TraceType::Miss, "Failed to find workspace for %s", id);
    return {};
  }
  const auto hit = std::find_if(workspaces.begin(), workspaces.end(), [&](const WorkspaceRecord& workspace) {
    return workspace.id == workspaceId;
  });
  if (hit == workspaces.end()) return {};
  std::string path = SectionPath(record, VfsNameId::Workspaces);
  if (path.empty()) return {};
  path += "/" + hit->name;
  // A workspace ends in no "/", unlike a folder below: hosts keep texts of both forms, so neither may change.
  return folderOnly ? path : path + "/" + EscapeFileName(record.master.cadName);
}

// The path of the document's folder with its closing "/".
std::string FolderPath(const DocumentRecord& record) {
  std::string folderPath;
  if (!GetFolderPathInContext(record, folderPath)) return {};
  std::string path = SectionPath(record, VfsNameId::Folders);
  if (path.empty()) return {};
  if (!folderPath.starts_with('/')) path += '/';
  path += folderPath;
  if (!path.ends_with('/')) path += '/';
  return path;
}

// "|" and the version for a document that is not the newest; nothing for the newest, whose path without a
// version means it, and nothing when the server cannot tell.
std::string VersionSuffix(ServerContext& server, const DocumentRecord& record, const char* id) {
  LatestInfo latest;
  DocumentQuery query;
  query.latest = &latest;
  const bool isOlder = GetDocumentDetails(server, id, query) == Ok && !latest.isLatest;
  return isOlder ? "|" + VersionText(record) : std::string();
}

}  // namespace

std::string FindDocumentPath(ServerContext& server, const char* id, bool folderOnly, bool latestForm) {
  const CheckoutId parsed = ParseCheckoutId(id);
  DocumentRecord record;
  if (ReadDocument(server, parsed.field0, record) != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", TextOrEmpty(id));
    return {};
  }
  if (const std::string workspaceId = WorkspaceOf(parsed); !workspaceId.empty()) {
    return PathInWorkspace(server, record, workspaceId, id, folderOnly);
  }
  std::string path = FolderPath(record);
  if (path.empty() || folderOnly) return path;
  path += EscapeFileName(record.master.cadName);
  if (latestForm) return path;
  return path + VersionSuffix(server, record, id);
}

}  // namespace lxservices::cms_interface::vantry
