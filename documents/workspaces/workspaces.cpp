#include "documents/workspaces/workspaces.h"

#include <algorithm>
#include <string_view>

#include "base/settings.h"
#include "base/tracers.h"
#include "connection/rest_stream.h"
#include "connection/url_escape.h"
#include "documents/reading/document_reader.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* workspacesPath = "servlet/rest/v1/dkm/workspaces";

// Reads a list: a record is appended for each element, and stays blank for one that the reader refuses.
template <typename Record>
bool ReadRecords(const std::shared_ptr<VtConnection>& connection, const std::string& path,
                 bool (*read)(const rapidjson::Value&, Record&), std::list<Record>& list) {
  RestStream response(MakeGetRequest(connection->http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) return false;
  rapidjson::Document document;
  if (!ParseJsonResponse(response, document) || !document.IsArray()) return true;
  for (const auto& element : document.GetArray()) read(element, list.emplace_back());
  return true;
}

}  // namespace

bool ListWorkspaces(const std::shared_ptr<VtConnection>& connection, const std::string& contextId,
                    WorkspaceList& list) {
  const std::string path = std::string(workspacesPath) + "?contextId=" + EscapeForUrl(contextId);
  return ReadRecords(connection, path, ReadWorkspace, list);
}

bool ListUserWorkspaces(const std::shared_ptr<VtConnection>& connection, const std::string& contextId,
                        WorkspaceList& list) {
  WorkspaceList all;
  if (!ListWorkspaces(connection, contextId, all)) return false;
  const auto settings = CurrentSettings();
  const std::string_view prefix = settings->temporaryWorkspacePrefix;
  all.remove_if([prefix](const WorkspaceRecord& workspace) { return workspace.name.starts_with(prefix); });
  list.splice(list.end(), all);
  return true;
}

bool ListWorkspaceDocuments(const std::shared_ptr<VtConnection>& connection, const std::string& workspaceId,
                            DocumentList& list) {
  const std::string path = std::string(workspacesPath) + "/" + EscapeForUrl(workspaceId) + "/documents";
  return ReadRecords(connection, path, ReadDocumentSummary, list);
}

bool WorkspaceHoldsDocument(const std::shared_ptr<VtConnection>& connection, const std::string& documentId,
                            const std::string& workspaceId) {
  DocumentList documents;
  if (!ListWorkspaceDocuments(connection, workspaceId, documents)) {
    VtDirectTracer()(dp::TraceType::Error, "Failed to get documents for workspace %s\n", workspaceId.c_str());
    return false;
  }
  return std::any_of(documents.begin(), documents.end(),
                     [&](const DocumentSummary& document) { return document.id == documentId; });
}

bool FindUserWorkspace(const std::shared_ptr<VtConnection>& connection, const std::string& contextId,
                       const std::string& workspaceId, WorkspaceRecord& workspace) {
  WorkspaceList list;
  if (!ListUserWorkspaces(connection, contextId, list)) return false;
  const auto hit = std::find_if(list.begin(), list.end(), [&](const WorkspaceRecord& candidate) {
    return candidate.id == workspaceId;
  });
  if (hit == list.end()) return false;
  workspace = *hit;
  return true;
}

bool FindWorkspaceOfDocument(const std::shared_ptr<VtConnection>& connection, const std::string& documentId,
                             const std::string& contextId, WorkspaceRecord& workspace) {
  WorkspaceList list;
  if (!ListUserWorkspaces(connection, contextId, list)) return false;
  const auto hit = std::find_if(list.begin(), list.end(), [&](const WorkspaceRecord& candidate) {
    return WorkspaceHoldsDocument(connection, documentId, candidate.id);
  });
  if (hit == list.end()) return false;
  workspace = *hit;
  return true;
}

}  // namespace lxservices::cms_interface::vantry
