#include "browsing/vantry_lookup.h"

#include "base/checkout_id.h"
#include "base/failure_trace.h"
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
  const auto isWorkingCopy = IsWorkingCopy(server, record);
  if (!isWorkingCopy) return NotLocated(mark, documentId);
  if (!*isWorkingCopy) return documentId;
  const auto workspace = FindWorkspaceOfDocument(server, documentId, record.contextId);
  if (!workspace) return NotLocated(mark, documentId);
  return FormatWorkspaceId(workspace->id, documentId);
}

}  // namespace

std::string FindIdInWorkspace(ServerContext& server, const std::string& documentId,
                              const std::string& workspaceId) {
  const FailureStep step("find the document");
  const FailureMark mark;
  const auto [status, record] = ReadDocument(server, documentId);
  if (status != Ok) return NotLocated(mark, documentId);
  if (workspaceId.empty()) {
    return record.isCheckoutByYou ? FindCheckedOutId(server, record, documentId) : documentId;
  }
  if (!FindUserWorkspace(server, record.contextId, workspaceId)) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(
        dp::TraceType::Error, "Failed to locate workspace %s for document %s on server\n",
        workspaceId.c_str(), documentId.c_str());
    return {};
  }
  // Whether the workspace holds the document is left to the operations that need it there.
  return FormatWorkspaceId(workspaceId, documentId);
}

std::string FindLatestIdByCadName(ServerContext& server, const std::string& cadName) {
  const FailureStep step("find a document by its name");
  server.SettleServices();
  const auto record = FindDocumentByCadName(server, cadName);
  if (!record) return {};
  LatestInfo latest;
  DocumentQuery query;
  query.latest = &latest;
  if (GetDocumentDetails(server, ParseCheckoutId(record->id), query) != Ok) return {};
  return latest.id;
}

}  // namespace lxservices::cms_interface::vantry
