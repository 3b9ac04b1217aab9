#include "documents/workspaces/workspace_post.h"

#include "connection/url_escape.h"
#include "documents/reading/document_reader.h"
#include "documents/storing/document_writer.h"

namespace lxservices::cms_interface::vantry {

std::string WorkspaceOperationPath(const std::string& workspaceId, const char* operation) {
  return "servlet/rest/v1/dkm/workspaces/" + EscapeForUrl(workspaceId) + "/" + operation;
}

rapidjson::Document MakeObjectIdList(const std::string& documentId) {
  rapidjson::Document body(rapidjson::kObjectType);
  auto& allocator = body.GetAllocator();
  rapidjson::Value ids(rapidjson::kArrayType);
  ids.PushBack(MakeText(documentId, allocator), allocator);
  body.AddMember("objIdList", ids, allocator);
  return body;
}

bool ReadFirstDocument(RestStream& response, DocumentRecord& record) {
  rapidjson::Document answer;
  if (!ParseJsonResponse(response, answer)) return false;
  if (!answer.IsArray()) response.ReportBroken();
  if (answer.IsArray() && !answer.Empty()) ReadDocumentRecord(answer[0], record);
  return true;
}

}  // namespace lxservices::cms_interface::vantry
