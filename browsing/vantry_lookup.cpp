#include "browsing/vantry_lookup.h"

#include "base/checkout_id.h"
#include "base/text.h"
#include "base/tracers.h"
#include "browsing/cad_name_search.h"
#include "browsing/document_details.h"
#include "documents/checkout/working_copy.h"
#include "documents/reading/document_reads.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::string NotLocated(const std::string& documentId) {
  VtDirectTracer()(dp::TraceType::Error, "Failed to locate document %s on server\n", documentId.c_str());
  return {};
}

// The id of a document that the connected user has checked out: in the workspace that holds it if it is the
// working copy, alone if it is the original.
std::string FindCheckedOutId(ServerContext& server, const DocumentRecord& record,
                             const std::string& documentId) {
  bool isWorkingCopy = false;
  if (!IsWorkingCopy(server, record, isWorkingCopy)) return NotLocated(documentId);
  if (!isWorkingCopy) return documentId;
  WorkspaceRecord workspace;
  if (!FindWorkspaceOfDocument(server, documentId, record.contextId, workspace)) {
    return NotLocated(documentId);
  }
  return FormatWorkspaceId(workspace.id, documentId);
}

}  // namespace

std::string FindIdInWorkspace(ServerContext& server, const char* documentId, const char* workspaceId) {
  const std::string id = TextOrEmpty(documentId);
  const std::string workspace = TextOrEmpty(workspaceId);
  DocumentRecord record;
  if (ReadDocument(server, id, record) != Ok) return NotLocated(id);
  if (workspace.empty()) return record.isCheckoutByYou ? FindCheckedOutId(server, record, id) : id;
  WorkspaceRecord found;
  if (!FindUserWorkspace(server, record.contextId, workspace, found)) {
    VtDirectTracer()(dp::TraceType::Error, "Failed to locate workspace %s for document %s on server\n",
                     workspace.c_str(), id.c_str());
    return {};
  }
  // Whether the workspace holds the document is left to the operations that need it there.
  return FormatWorkspaceId(workspace, id);
}

std::string FindLatestIdByCadName(ServerContext& server, const char* cadName) {
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
