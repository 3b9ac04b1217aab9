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
std::optional<std::list<Record>> ReadRecords(ServerContext& server, const std::string& path,
                                             bool (*read)(const rapidjson::Value&, Record&)) {
  RestStream response(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) return std::nullopt;
  std::list<Record> list;
  rapidjson::Document document;
  if (!ParseArrayResponse(response, document)) return list;
  for (const auto& element : document.GetArray()) read(element, list.emplace_back());
  return list;
}

}  // namespace

std::optional<WorkspaceList> ListWorkspaces(ServerContext& server, const std::string& contextId) {
  const FailureStep step("list the workspaces");
  const std::string path = std::string(workspacesPath) + "?contextId=" + EscapeForUrl(contextId);
  return ReadRecords(server, path, ReadWorkspace);
}

std::optional<WorkspaceList> ListUserWorkspaces(ServerContext& server, const std::string& contextId) {
  auto list = ListWorkspaces(server, contextId);
  if (!list) return std::nullopt;
  const std::string_view prefix = server.settings().temporaryWorkspacePrefix;
  list->remove_if([prefix](const WorkspaceRecord& workspace) { return workspace.name.starts_with(prefix); });
  return list;
}

std::optional<DocumentList> ListWorkspaceDocuments(ServerContext& server, const std::string& workspaceId) {
  const FailureStep step("list a workspace");
  const std::string path = std::string(workspacesPath) + "/" + EscapeForUrl(workspaceId) + "/documents";
  return ReadRecords(server, path, ReadDocumentSummary);
}

bool WorkspaceHoldsDocument(ServerContext& server, const std::string& documentId,
                            const std::string& workspaceId) {
  const auto documents = ListWorkspaceDocuments(server, workspaceId);
  if (!documents) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to get documents for workspace %s\n",
                         workspaceId.c_str());
    return false;
  }
  return std::any_of(documents->begin(), documents->end(),
                     [&](const DocumentSummary& document) { return document.id == documentId; });
}

const WorkspaceRecord* FindById(const WorkspaceList& list, const std::string& workspaceId) {
  const auto hit = std::find_if(list.begin(), list.end(), [&](const WorkspaceRecord& candidate) {
    return candidate.id == workspaceId;
  });
  return hit != list.end() ? &*hit : nullptr;
}

std::optional<WorkspaceRecord> FindUserWorkspace(ServerContext& server, const std::string& contextId,
                                                 const std::string& workspaceId) {
  const auto list = ListUserWorkspaces(server, contextId);
  const WorkspaceRecord* hit = list ? FindById(*list, workspaceId) : nullptr;
  if (hit == nullptr) return std::nullopt;
  return *hit;
}

std::optional<WorkspaceRecord> FindWorkspaceOfDocument(ServerContext& server, const std::string& documentId,
                                                       const std::string& contextId) {
  const auto list = ListUserWorkspaces(server, contextId);
  if (!list) return std::nullopt;
  const auto hit = std::find_if(list->begin(), list->end(), [&](const WorkspaceRecord& candidate) {
    return WorkspaceHoldsDocument(server, documentId, candidate.id);
  });
  if (hit == list->end()) return std::nullopt;
  return *hit;
}

}  // namespace lxservices::cms_interface::vantry
