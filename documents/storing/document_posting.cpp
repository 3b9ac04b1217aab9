#include "documents/storing/document_posting.h"

#include <algorithm>

#include "base/failure_trace.h"
#include "documents/reading/document_reader.h"
#include "documents/storing/json_post.h"
#include "documents/workspaces/workspace_post.h"

namespace lxservices::cms_interface::vantry {
namespace {

// A value that is no array is wrapped in one; null counts as an empty one.
rapidjson::Value AsArray(rapidjson::Value& value, JsonAllocator& allocator) {
  if (value.IsArray()) return std::move(value);
  rapidjson::Value array(rapidjson::kArrayType);
  if (!value.IsNull()) array.PushBack(value, allocator);
  return array;
}

void AddResolutions(rapidjson::Value& body, rapidjson::Value* resolutions, JsonAllocator& allocator) {
  if (resolutions == nullptr) return;
  rapidjson::Value array = AsArray(*resolutions, allocator);
  if (!array.Empty()) body.AddMember("conflictResolutions", array, allocator);
}

void ReadRecords(const rapidjson::Document& answer, std::span<DocumentRecord> records) {
  if (!answer.IsArray()) return;
  const std::size_t count = std::min<std::size_t>(records.size(), answer.Size());
  for (std::size_t index = 0; index < count; ++index) {
    ReadDocumentRecord(answer[static_cast<rapidjson::SizeType>(index)], records[index]);
  }
}

Status PostBody(ServerContext& server, const std::string& path, const rapidjson::Value& body,
                std::span<DocumentRecord> records) {
  JsonPost post(server, path, body);
  RestStream& response = post.response();
  rapidjson::Document answer;
  if (response.succeeded() && ParseJsonResponse(response, answer)) {
    if (!answer.IsArray()) response.ReportBroken();
    ReadRecords(answer, records);
    return Ok;
  }
  TracerFor(Follows())(dp::TraceType::Error, "Failed to update document with error %d : %s\n",
                       response.status(), response.errorText().c_str());
  return Refused;
}

}  // namespace

Status PostDocumentInstructions(ServerContext& server, bool isCreate, JsonAllocator& allocator,
                                rapidjson::Value& instructions, const std::string& contextId,
                                std::span<DocumentRecord> records, rapidjson::Value* resolutions) {
  const FailureStep step("write the document");
  rapidjson::Value array = AsArray(instructions, allocator);
  if (array.Empty()) return NotFound;
  rapidjson::Value body(rapidjson::kObjectType);
  body.AddMember(rapidjson::StringRef(isCreate ? "createInstructions" : "iterateInstructions"), array,
                 allocator);
  body.AddMember("contextId", MakeText(contextId, allocator), allocator);
  AddResolutions(body, resolutions, allocator);
  return PostBody(server, "servlet/rest/v1/dkm/documents", body, records);
}

Status PostStore(ServerContext& server, JsonAllocator& allocator, rapidjson::Value& instructions,
                 const std::string& workspaceId, std::span<DocumentRecord> records,
                 rapidjson::Value* resolutions) {
  const FailureStep step("store into the workspace");
  rapidjson::Value array = AsArray(instructions, allocator);
  if (array.Empty()) return NotFound;
  rapidjson::Value body(rapidjson::kObjectType);
  body.AddMember("storeInstructions", array, allocator);
  AddResolutions(body, resolutions, allocator);
  return PostBody(server, WorkspaceOperationPath(workspaceId, "store"), body, records);
}

}  // namespace lxservices::cms_interface::vantry
