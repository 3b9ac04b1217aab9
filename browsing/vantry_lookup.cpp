#include "browsing/vantry_lookup.h"

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/text.h"
#include "browsing/cad_name_search.h"
#include "browsing/document_details.h"
#include "documents/checkout/working_copy.h"
#include "documents/reading/document_reads.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::string NotLocated(const FailureMark& mark, const std::string& documentId) {
  TracerFor(FollowsOr(mark, FailureKind::NotFound))(
      dp::TraceType::Error, "Failed to locate document %s on server\n", documentId.c_str());
  return {};
}

// The id of a document that the connected user has checked out: in the workspace that holds it if it is the
// working copy, alone if it is the original.
std::string FindCheckedOutId(ServerContext& server, const DocumentRecord& record,
                             const std::string& documentId) {
  const FailureMark mark;
  bool isWorkingCopy = false;
  if (!IsWorkingCopy(server, record, isWorkingCopy)) return NotLocated(mark, documentId);
  if (!isWorkingCopy) return documentId;
  WorkspaceRecord workspace;
  if (!FindWorkspaceOfDocument(server, documentId, record.contextId, workspace)) {
    return NotLocated(mark, documentId);
  }
  return FormatWorkspaceId(workspace.id, documentId);
}

}  // namespace

std::string FindIdInWorkspace(ServerContext& server, const char* documentId, const char* workspaceId) {
  const FailureStep step("find the document");
  const FailureMark mark;
  const std::string id = TextOrEmpty(documentId);
  const std::string workspace = TextOrEmpty(workspaceId);
  DocumentRecord record;
  if (ReadDocument(server, id, record) != Ok) return NotLocated(mark, id);
  if (workspace.empty()) return record.isCheckoutByYou ? FindCheckedOutId(server, record, id) : id;
  WorkspaceRecord found;
  if (!FindUserWorkspace(server, record.contextId, workspace, found)) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(
        dp::TraceType::Error, "Failed to locate workspace %s for document %s on server\n", workspace.c_str(),
        id.c_str());
    return {};
  }
  // Whether the workspace holds the document is left to the operations that need it there.
  return FormatWorkspaceId(workspace, id);
}

std::string FindLatestIdByCadName(ServerContext& server, const char* cadName) {
  const FailureStep step("find a document by its name");
  if (cadName == nullptr) return {};
  server.SettleServices();
  DocumentRecord record;
  if (!FindDocumentByCadName(server, cadName, record)) return {};
  LatestInfo latest;
  DocumentQuery query;
  query.latest = &latest;
  if (GetDocumentDetails(server, record.id.c_str(), query) != Ok) return {};
  return latest.id;
}

}  // namespace lxservices::cms_interface::vantry
