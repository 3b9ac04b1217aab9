#include "simulator/routes/routes.h"
#include "simulator/store/document_lists.h"
#include "simulator/wire/metadata.h"
#include "simulator/wire/odata_answers.h"

namespace vantry_sim {
namespace {

/// The first version of the dynamic service shows every version and knows no other, neither which is the
/// latest nor what a document's versions are.
bool KnowsLatest(const Request& request, DocumentService service) {
  return service == DocumentService::Cad || request.Path("version") != "1";
}

Response Search(const ServiceContext& context, const Request& request, DocumentService service) {
  const auto name = service == DocumentService::Dynamic ? "DynamicDocMgmt" : "CADDocumentMgmt";
  if (!OffersVersion(context.options.generation, name, request.Path("version"))) {
    return ErrorResponse(404, "no-such-resource", "this server doesn't offer this version of the service");
  }
  ODataProblem problem;
  const auto query = ParseODataQuery(request.query, problem);
  if (!query) return ODataRefusal(problem);
  if (query->latestVersionOnly && !KnowsLatest(request, service)) {
    return ODataRefusal({400, "this version of the service doesn't know zvk.search.latestversion"});
  }
  if (query->expand) {
    if (query->expand->navigation != "Versions" || !KnowsLatest(request, service)) {
      return ODataRefusal({400, "these rows don't have the navigation of the $expand"});
    }
    if (!VersionsHave(service, *query->expand))
      return ODataRefusal({400, "$expand selects what versions don't have"});
  }
  ODataRowParts parts;
  parts.expanded = [&](JsonText& json, std::int64_t key, const ODataExpand& expand) {
    WriteVersions(json, context.database, key, service, expand);
  };
  const auto list =
      DocumentSearch(service, query->latestVersionOnly, query->filter.has_value(), request.user);
  return AnswerODataList(context, request, list, *query, parts);
}

}  // namespace

void AddSearchRoutes(Router& router, const ServiceContext& context) {
  if (!HasOData(context.options.generation)) return;
  router.Add(
      "GET", "servlet/odata/v{version}/DynamicDocMgmt/DynamicDocuments",
      [&context](const Request& request) { return Search(context, request, DocumentService::Dynamic); },
      "dynamic documents of all folders, with one's own working copies");
  router.Add(
      "GET", "servlet/odata/v{version}/CADDocumentMgmt/CADDocuments",
      [&context](const Request& request) { return Search(context, request, DocumentService::Cad); },
      "the same for CAD documents");
}

}  // namespace vantry_sim
