#include "simulator/routes/routes.h"
#include "simulator/store/document_json.h"
#include "simulator/store/document_store.h"
#include "simulator/wire/json.h"

namespace vantry_sim {
namespace {

Response NoSuchDocument() {
  return ErrorResponse(404, "no-such-document", "no document with this id for this user");
}

Response JsonResponse(JsonText& json) {
  Response response;
  response.body = json.Take();
  return response;
}

Response Document(const ServiceContext& context, const Request& request) {
  const auto document = FindDocument(context.database, request.Path("id"), request.user);
  if (!document) return NoSuchDocument();
  JsonText json;
  WriteDocument(json, context.database, *document, request.user, BaseUrl(context, request));
  return JsonResponse(json);
}

Response Versions(const ServiceContext& context, const Request& request) {
  const auto contextId = request.Query("contextId");
  if (!contextId) return ErrorResponse(400, "missing-parameter", "contextId is missing");
  const auto document = FindDocument(context.database, request.Path("id"), request.user);
  if (!document || document->contextOid != *contextId) return NoSuchDocument();
  JsonText json;
  json.StartArray();
  for (const DocumentRow& version : VersionsOf(context.database, *document, request.user)) {
    WriteDocumentSummary(json, version, request.user);
  }
  json.EndArray();
  return JsonResponse(json);
}

Response Search(const ServiceContext& context, const Request& request) {
  const auto number = request.Query("number");
  if (!number) return ErrorResponse(400, "missing-parameter", "number is missing");
  const std::string scope = request.Query("scope").value_or("");
  const std::string baseUrl = BaseUrl(context, request);
  JsonText json;
  json.StartArray();
  for (const DocumentRow& document : SearchByNumber(context.database, *number, scope, request.user)) {
    WriteDocument(json, context.database, document, request.user, baseUrl);
  }
  json.EndArray();
  return JsonResponse(json);
}

}  // namespace

void AddDocumentRoutes(Router& router, const ServiceContext& context) {
  router.Add(
      "GET", "servlet/rest/v1/dkm/documents/search",
      [&context](const Request& request) { return Search(context, request); },
      "every version with the `?number=`, in a context with `&scope=<context id>`");
  router.Add(
      "GET", "servlet/rest/v1/dkm/documents/{id}",
      [&context](const Request& request) { return Document(context, request); }, "a document");
  router.Add(
      "GET", "servlet/rest/v1/dkm/documents/{id}/versions",
      [&context](const Request& request) { return Versions(context, request); },
      "its versions, newest first; `?contextId=` must be its own");
}

}  // namespace vantry_sim
