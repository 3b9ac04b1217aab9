#include "documents/workspaces/workspace_post.h"

#include "connection/url_escape.h"
#include "documents/reading/document_reader.h"
#include "documents/storing/document_writer.h"

namespace lxservices::cms_interface::vantry {

std::string WorkspaceOperationPath(const std::string& workspaceId, std::string_view operation) {
  return ("servlet/rest/v1/dkm/workspaces/" + EscapeForUrl(workspaceId) + "/").append(operation);
}

rapidjson::Document MakeObjectIdList(const std::string& documentId) {
  rapidjson::Document body(rapidjson::kObjectType);
  auto& allocator = body.GetAllocator();
  rapidjson::Value ids(rapidjson::kArrayType);
  ids.PushBack(MakeText(documentId, allocator), allocator);
  body.AddMember("objIdList", ids, allocator);
  return body;
}

std::optional<DocumentRecord> ReadFirstDocument(RestStream& response) {
  rapidjson::Document answer;
  if (!ParseJsonResponse(response, answer)) return std::nullopt;
  if (!answer.IsArray()) response.ReportBroken();
  DocumentRecord record;
  if (answer.IsArray() && !answer.Empty()) ReadDocumentRecord(answer[0], record);
  return record;
}

}  // namespace lxservices::cms_interface::vantry
