#include "documents/reading/document_reads.h"

#include <utility>

#include "base/failure_trace.h"
#include "base/step_words.h"
#include "connection/rest_stream.h"
#include "connection/url_escape.h"
#include "documents/reading/document_reader.h"
#include "documents/reading/document_text.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* documentsPath = "servlet/rest/v1/dkm/documents/";

bool ReadBody(RestStream& response, const DocumentRecord* known, DocumentRecord& record) {
  if (response.isBodyInMemory()) return ReadDocumentText(response.NextPiece(), known, record);
  return ReadDocumentText([&response] { return response.NextPiece(); }, known, record);
}

// The record is filled where the caller gets it: to move one costs as much as to read half of it.
Result<DocumentRecord> ReadOnTop(ServerContext& server, const std::string& id, const DocumentRecord* known) {
  const FailureStep step("read the document");
  Result<DocumentRecord> document(Ok);
  const std::string path = documentsPath + EscapeForUrl(id);
  RestStream response(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) {
    document.status = response.errorCode() != du::http::ErrorCode::Done ? ConnectionFailed : Refused;
  } else if (!ReadBody(response, known, document.value)) {
    response.ReportBroken();
  }
  return document;
}

}  // namespace

Result<DocumentRecord> ReadDocument(ServerContext& server, const std::string& id) {
  return ReadOnTop(server, id, nullptr);
}

Result<DocumentRecord> ReadDocument(ServerContext& server, const std::string& id,
                                    const DocumentRecord& known) {
  return ReadOnTop(server, id, &known);
}

std::optional<rapidjson::Document> ReadDocumentJson(ServerContext& server, const std::string& id) {
  const FailureStep step("read the document");
  const std::string path = documentsPath + EscapeForUrl(id);
  RestStream response(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) return std::nullopt;
  std::optional<rapidjson::Document> document(std::in_place);
  if (ParseJsonResponse(response, *document) && !document->IsObject()) response.ReportBroken();
  return document;
}

std::optional<std::vector<DocumentSummary>> ReadDocumentVersions(ServerContext& server, const std::string& id,
                                                                 const std::string& contextId) {
  const FailureStep step(stepListVersions);
  const std::string path =
      documentsPath + EscapeForUrl(id) + "/versions?contextId=" + EscapeForUrl(contextId);
  RestStream response(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) return std::nullopt;
  std::vector<DocumentSummary> versions;
  rapidjson::Document document;
  if (!ParseArrayResponse(response, document)) return versions;
  for (const auto& element : document.GetArray()) {
    DocumentSummary version;
    if (ReadDocumentSummary(element, version)) versions.push_back(std::move(version));
  }
  return versions;
}

std::optional<std::vector<DocumentRecord>> SearchDocuments(ServerContext& server, const std::string& number,
                                                           const std::string& scope) {
  const FailureStep step("search by number");
  std::string path = std::string(documentsPath) + "search?number=" + EscapeForUrl(number);
  if (!scope.empty()) path += "&scope=" + EscapeForUrl(scope);
  RestStream response(MakeGetRequest(server.http(), path.c_str(), nullptr), {});
  if (!response.succeeded()) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to find doc number %s with response: %s",
                         number.c_str(), response.errorText().c_str());
    return std::nullopt;
  }
  std::vector<DocumentRecord> documents;
  rapidjson::Document document;
  if (!ParseArrayResponse(response, document)) return documents;
  for (const auto& element : document.GetArray()) ReadDocumentRecord(element, documents.emplace_back());
  return documents;
}

}  // namespace lxservices::cms_interface::vantry
