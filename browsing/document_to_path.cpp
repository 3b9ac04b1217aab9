#include "browsing/document_to_path.h"

#include "base/failure_trace.h"
#include "base/file_name.h"
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
  const std::string root = RootOfKind(KindOfRestWord(record.contextType));
  if (root.empty()) return {};
  return root + "/" + record.contextName + "/" + LocalisedVfsName(section);
}

std::string PathInWorkspace(ServerContext& server, const DocumentRecord& record, const CheckoutId& id,
                            DocumentPathForm form) {
  const FailureStep step("find the path");
  const auto workspaces = ListUserWorkspaces(server, record.contextId);
  if (!workspaces) {
    TracerFor(Follows())(dp::TraceType::Miss, "Failed to find workspace for %s", id.text.c_str());
    return {};
  }
  const WorkspaceRecord* hit = FindById(*workspaces, id.workspace);
  if (hit == nullptr) return {};
  std::string path = SectionPath(record, VfsNameId::Workspaces);
  if (path.empty()) return {};
  path += "/" + hit->name;
  // A workspace ends in no "/", unlike a folder below: hosts keep texts of both forms, so neither may change.
  return form == DocumentPathForm::Folder ? path : path + "/" + EscapeFileName(record.master.cadName);
}

// The path of the document's folder with its closing "/".
std::string FolderPath(const DocumentRecord& record) {
  const auto folderPath = GetFolderPathInContext(record);
  if (!folderPath) return {};
  std::string path = SectionPath(record, VfsNameId::Folders);
  if (path.empty()) return {};
  if (!folderPath->starts_with('/')) path += '/';
  path += *folderPath;
  if (!path.ends_with('/')) path += '/';
  return path;
}

// "|" and the version for a document that is not the newest; nothing for the newest, whose path without a
// version means it, and nothing when the server cannot tell.
std::string VersionSuffix(ServerContext& server, const DocumentRecord& record, const CheckoutId& id) {
  LatestInfo latest;
  DocumentQuery query;
  query.latest = &latest;
  const bool isOlder = GetDocumentDetails(server, id, query) == Ok && !latest.isLatest;
  return isOlder ? "|" + VersionText(record) : std::string();
}

}  // namespace

std::string FindDocumentPath(ServerContext& server, const CheckoutId& id, DocumentPathForm form) {
  const auto [status, record] = ReadDocument(server, id.document);
  if (status != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", id.text.c_str());
    return {};
  }
  if (!WorkspaceOf(id).empty()) return PathInWorkspace(server, record, id, form);
  std::string path = FolderPath(record);
  if (path.empty() || form == DocumentPathForm::Folder) return path;
  path += EscapeFileName(record.master.cadName);
  if (form == DocumentPathForm::LatestVersion) return path;
  return path + VersionSuffix(server, record, id);
}

}  // namespace lxservices::cms_interface::vantry
