#include "browsing/path_to_document.h"

#include <algorithm>
#include <vector>

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/file_name.h"
#include "browsing/contexts.h"
#include "browsing/file_location.h"
#include "browsing/vfs_tree.h"
#include "browsing/workspace_listing.h"
#include "documents/reading/document_reads.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::optional<std::vector<DocumentSummary>> ListVersions(ServerContext& server, const std::string& id) {
  const auto [status, record] = ReadDocument(server, id);
  if (status != Ok) return std::nullopt;
  return ReadDocumentVersions(server, id, record.contextId);
}

// The document with a version. The versions are asked for before the version's text is looked at, so that a
// path whose document is gone is told apart from one with a bad version.
std::string FindVersion(ServerContext& server, const std::string& id, const std::string& version,
                        const std::string& path) {
  const FailureStep step("find the version");
  const FailureMark mark;
  const auto versions = ListVersions(server, id);
  if (!versions) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Miss, "Failed to get file %s versions",
                                                      path.c_str());
    return {};
  }
  const auto stop = version.find('.');
  if (stop == std::string::npos) {
    TracerFor({FailureKind::NotFound})(dp::TraceType::Error, "Looking for bad version %s", version.c_str());
    return {};
  }
  const std::string revision = version.substr(0, stop);
  const std::string iteration = version.substr(stop + 1);
  const auto hit = std::find_if(versions->begin(), versions->end(), [&](const DocumentSummary& candidate) {
    return candidate.revision == revision && candidate.iteration == iteration;
  });
  // No line for a version that does not exist: hosts try versions out, and the caller traces the whole path.
  if (hit == versions->end()) ReportReason({FailureKind::NotFound});
  return hit != versions->end() ? hit->id : std::string();
}

std::string ResolveInFolders(ServerContext& server, const ParsedVfsPath& parsed, const std::string& path) {
  const FailureStep step("find the file");
  const FailureMark mark;
  const auto find = [&](const std::string& cadName) {
    return FindFileInFolder(server, cadName, parsed.folderPath, parsed.kind, parsed.context);
  };
  // A name that looks escaped may be a document's plain name, so the leaf is tried as it is too. That
  // second try is made even when both are the same: a search that failed for the moment gets another chance.
  std::string id = find(UnescapeFileName(parsed.leaf));
  if (id.empty()) id = find(parsed.leaf);
  if (id.empty()) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Miss, "Failed to find file %s",
                                                      path.c_str());
    return {};
  }
  return parsed.version.empty() ? id : FindVersion(server, id, parsed.version, path);
}

const DocumentSummary* FindByCadName(const DocumentList& documents, const std::string& cadName) {
  const auto hit = std::find_if(documents.begin(), documents.end(), [&](const DocumentSummary& document) {
    return document.master.cadName == cadName;
  });
  return hit != documents.end() ? &*hit : nullptr;
}

// The version in the path, if any, plays no part: a workspace holds one version of a document.
std::string ResolveInWorkspace(ServerContext& server, const ParsedVfsPath& parsed, const std::string& path) {
  const FailureStep step("find the file in its workspace");
  const FailureMark mark;
  const std::string contextId = ResolveContextId(server, parsed.kind, parsed.context);
  if (contextId.empty()) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(
        dp::TraceType::Error, "Failed to locate context %s on server\n", parsed.context.c_str());
    return {};
  }
  const std::string workspaceId = FindWorkspaceIdByName(server, parsed.folderPath, contextId);
  if (workspaceId.empty()) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Miss,
                                                      "Failed to find workspace for file %s", path.c_str());
    return {};
  }
  const auto documents = ListWorkspaceDocuments(server, workspaceId);
  if (!documents) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(
        dp::TraceType::Miss, "Failed to find workspace documents for file %s", path.c_str());
    return {};
  }
  const DocumentSummary* document = FindByCadName(*documents, UnescapeFileName(parsed.leaf));
  if (document == nullptr) document = FindByCadName(*documents, parsed.leaf);
  if (document == nullptr) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Miss, "Failed to find file %s",
                                                      path.c_str());
    return {};
  }
  return FormatWorkspaceId(workspaceId, document->id);
}

}  // namespace

std::string ResolveDocumentPath(ServerContext& server, const std::string& path) {
  const ParsedVfsPath parsed = SplitFilePath(path);
  server.SettleServices();
  if (IsVfsName(parsed.section, VfsNameId::Folders)) {
    return ResolveInFolders(server, parsed, path);
  }
  if (IsVfsName(parsed.section, VfsNameId::Workspaces)) {
    return ResolveInWorkspace(server, parsed, path);
  }
  return {};
}

}  // namespace lxservices::cms_interface::vantry
