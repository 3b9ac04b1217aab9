#include "simulator/routes/routes.h"
#include "simulator/wire/json.h"
#include "simulator/wire/metadata.h"
#include "simulator/wire/odata_answers.h"

namespace vantry_sim {
namespace {

Response ServiceList(const ServiceContext& context) {
  JsonText json;
  json.StartArray();
  for (const ODataService& service : ServicesOf(context.options.generation)) {
    json.StartObject();
    json.Member("path", "servlet/odata/" + std::string(service.id)).Member("name", service.name);
    json.Member("description", service.description).Member("id", service.id).EndObject();
  }
  json.EndArray();
  return ODataResponse(json.Take());
}

Response Metadata(const ServiceContext& context, const Request& request) {
  auto document =
      MetadataDocument(context.options.generation, request.Path("service"), context.options.translation);
  if (!document) return ErrorResponse(404, "no-such-service", "this server doesn't offer the service");
  Response response;
  response.contentType = "application/xml;charset=UTF-8";
  response.headers.emplace_back("OData-Version", "4.0");
  response.body = std::move(*document);
  return response;
}

}  // namespace

void AddMetadataRoutes(Router& router, const ServiceContext& context) {
  if (!HasOData(context.options.generation)) return;
  const auto list = [&context](const Request&) { return ServiceList(context); };
  router.Add("GET", "servlet/odata/", list, "the OData services, as a bare array");
  router.Add("GET", "servlet/odata", list, "the same");
  router.Add(
      "GET", "servlet/odata/{service}/$metadata",
      [&context](const Request& request) { return Metadata(context, request); },
      "the schema of DataAdmin, DynamicDocMgmt or CADDocumentMgmt");
}

}  // namespace vantry_sim
