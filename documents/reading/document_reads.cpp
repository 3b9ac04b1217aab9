#include "documents/reading/document_reads.h"

#include <array>
#include <cstddef>
#include <utility>

#include "base/failure_trace.h"
#include "connection/rest_stream.h"
#include "connection/url_escape.h"
#include "documents/reading/document_reader.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* documentsPath = "servlet/rest/v1/dkm/documents/";

/// A document with room for the usual answer, which is then read without asking for memory.
class RoomyDocument {
 public:
  RoomyDocument() : allocator_(room_.data(), room_.size()), document_(&allocator_, stackBytes) {}
  [[nodiscard]] rapidjson::Document& get() { return document_; }

 private:
  static constexpr std::size_t stackBytes = 4096;

  alignas(std::max_align_t) std::array<char, 16384> room_;
  rapidjson::Document::AllocatorType allocator_;
  rapidjson::Document document_;
};

}  // namespace

Status ReadDocument(ServerContext& server, const std::string& id, DocumentRecord& record) {
  const FailureStep step("read the document");
  const std::string path = documentsPath + EscapeForUrl(id);
  RestStream response(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) {
    return response.errorCode() != du::http::ErrorCode::Done ? ConnectionFailed : Refused;
  }
  RoomyDocument room;
  rapidjson::Document& document = room.get();
  if (ParseJsonInResponse(response, document) && !ReadDocumentRecord(document, record))
    response.ReportBroken();
  return Ok;
}

bool ReadDocumentJson(ServerContext& server, const std::string& id, rapidjson::Document& document) {
  const FailureStep step("read the document");
  const std::string path = documentsPath + EscapeForUrl(id);
  RestStream response(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) return false;
  if (ParseJsonResponse(response, document) && !document.IsObject()) response.ReportBroken();
  return true;
}

bool ReadDocumentVersions(ServerContext& server, const std::string& id, const std::string& contextId,
                          std::vector<DocumentSummary>& versions) {
  const FailureStep step("list the versions");
  const std::string path =
      documentsPath + EscapeForUrl(id) + "/versions?contextId=" + EscapeForUrl(contextId);
  RestStream response(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) return false;
  rapidjson::Document document;
  if (!ParseArrayResponse(response, document)) return true;
  for (const auto& element : document.GetArray()) {
    DocumentSummary version;
    if (ReadDocumentSummary(element, version)) versions.push_back(std::move(version));
  }
  return true;
}

bool SearchDocuments(ServerContext& server, const std::string& number, std::vector<DocumentRecord>& documents,
                     const char* scope) {
  const FailureStep step("search by number");
  std::string path = std::string(documentsPath) + "search?number=" + EscapeForUrl(number);
  if (scope != nullptr && *scope != '\0') path += "&scope=" + EscapeForUrl(scope);
  RestStream response(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to find doc number %s with response: %s",
                         number.c_str(), response.errorText().c_str());
    return false;
  }
  rapidjson::Document document;
  if (!ParseArrayResponse(response, document)) return true;
  for (const auto& element : document.GetArray()) ReadDocumentRecord(element, documents.emplace_back());
  return true;
}

}  // namespace lxservices::cms_interface::vantry
