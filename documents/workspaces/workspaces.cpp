#include "documents/workspaces/workspaces.h"

#include <algorithm>
#include <string_view>

#include "base/failure_trace.h"
#include "connection/rest_stream.h"
#include "connection/url_escape.h"
#include "documents/reading/document_reader.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* workspacesPath = "servlet/rest/v1/dkm/workspaces";

// Reads a list: a record is appended for each element, and stays blank for one that the reader refuses.
template <typename Record>
bool ReadRecords(ServerContext& server, const std::string& path,
                 bool (*read)(const rapidjson::Value&, Record&), std::list<Record>& list) {
  RestStream response(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) return false;
  rapidjson::Document document;
  if (!ParseArrayResponse(response, document)) return true;
  for (const auto& element : document.GetArray()) read(element, list.emplace_back());
  return true;
}

}  // namespace

bool ListWorkspaces(ServerContext& server, const std::string& contextId, WorkspaceList& list) {
  const FailureStep step("list the workspaces");
  const std::string path = std::string(workspacesPath) + "?contextId=" + EscapeForUrl(contextId);
  return ReadRecords(server, path, ReadWorkspace, list);
}

bool ListUserWorkspaces(ServerContext& server, const std::string& contextId, WorkspaceList& list) {
  WorkspaceList all;
  if (!ListWorkspaces(server, contextId, all)) return false;
  const std::string_view prefix = server.settings().temporaryWorkspacePrefix;
  all.remove_if([prefix](const WorkspaceRecord& workspace) { return workspace.name.starts_with(prefix); });
  list.splice(list.end(), all);
  return true;
}

bool ListWorkspaceDocuments(ServerContext& server, const std::string& workspaceId, DocumentList& list) {
  const FailureStep step("list a workspace");
  const std::string path = std::string(workspacesPath) + "/" + EscapeForUrl(workspaceId) + "/documents";
  return ReadRecords(server, path, ReadDocumentSummary, list);
}

bool WorkspaceHoldsDocument(ServerContext& server, const std::string& documentId,
                            const std::string& workspaceId) {
  DocumentList documents;
  if (!ListWorkspaceDocuments(server, workspaceId, documents)) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to get documents for workspace %s\n",
                         workspaceId.c_str());
    return false;
  }
  return std::any_of(documents.begin(), documents.end(),
                     [&](const DocumentSummary& document) { return document.id == documentId; });
}

bool FindUserWorkspace(ServerContext& server, const std::string& contextId, const std::string& workspaceId,
                       WorkspaceRecord& workspace) {
  WorkspaceList list;
  if (!ListUserWorkspaces(server, contextId, list)) return false;
  const auto hit = std::find_if(list.begin(), list.end(), [&](const WorkspaceRecord& candidate) {
    return candidate.id == workspaceId;
  });
  if (hit == list.end()) return false;
  workspace = *hit;
  return true;
}

bool FindWorkspaceOfDocument(ServerContext& server, const std::string& documentId,
                             const std::string& contextId, WorkspaceRecord& workspace) {
  WorkspaceList list;
  if (!ListUserWorkspaces(server, contextId, list)) return false;
  const auto hit = std::find_if(list.begin(), list.end(), [&](const WorkspaceRecord& candidate) {
    return WorkspaceHoldsDocument(server, documentId, candidate.id);
  });
  if (hit == list.end()) return false;
  workspace = *hit;
  return true;
}

}  // namespace lxservices::cms_interface::vantry
