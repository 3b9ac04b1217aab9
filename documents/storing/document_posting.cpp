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

void AddResolutions(rapidjson::Value& body, const Posting& posting) {
  if (posting.resolutions == nullptr) return;
  rapidjson::Value array = AsArray(*posting.resolutions, posting.allocator);
  if (!array.Empty()) body.AddMember("conflictResolutions", array, posting.allocator);
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

Status PostDocumentInstructions(ServerContext& server, InstructionKind kind, const Posting& posting,
                                const std::string& contextId, std::span<DocumentRecord> records) {
  const FailureStep step("write the document");
  JsonAllocator& allocator = posting.allocator;
  rapidjson::Value array = AsArray(posting.instructions, allocator);
  if (array.Empty()) return NotFound;
  rapidjson::Value body(rapidjson::kObjectType);
  const bool creates = kind == InstructionKind::Create;
  body.AddMember(rapidjson::StringRef(creates ? "createInstructions" : "iterateInstructions"), array,
                 allocator);
  body.AddMember("contextId", MakeText(contextId, allocator), allocator);
  AddResolutions(body, posting);
  return PostBody(server, "servlet/rest/v1/dkm/documents", body, records);
}

Status PostStore(ServerContext& server, const Posting& posting, const std::string& workspaceId,
                 std::span<DocumentRecord> records) {
  const FailureStep step("store into the workspace");
  rapidjson::Value array = AsArray(posting.instructions, posting.allocator);
  if (array.Empty()) return NotFound;
  rapidjson::Value body(rapidjson::kObjectType);
  body.AddMember("storeInstructions", array, posting.allocator);
  AddResolutions(body, posting);
  return PostBody(server, WorkspaceOperationPath(workspaceId, "store"), body, records);
}

}  // namespace lxservices::cms_interface::vantry
