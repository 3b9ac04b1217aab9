#include "simulator/routes/routes.h"
#include "simulator/routes/write_route.h"
#include "simulator/store/document_lists.h"
#include "simulator/store/translation_store.h"
#include "simulator/wire/json.h"
#include "simulator/wire/json_members.h"
#include "simulator/wire/metadata.h"
#include "simulator/wire/odata_answers.h"

namespace vantry_sim {
namespace {

/// The document of the request's path; a refusal for an unknown one and for a version of the service that
/// isn't offered.
OrRefusal<DocumentRow> FindAddressed(const ServiceContext& context, const Request& request) {
  if (!OffersVersion(context.options.generation, "DynamicDocMgmt", request.Path("version"))) {
    return ErrorResponse(404, "no-such-resource", "this server doesn't offer this version of the service");
  }
  return FindDynamicDocument(context.database, request.Path("id"), request.user);
}

/// The address of one document takes no option that is for lists.
std::optional<ODataProblem> RefuseListOptions(const ODataQuery& query) {
  if (query.filter || !query.order.empty() || query.top || query.latestVersionOnly)
    return ODataProblem{400, "one document takes $select and $expand alone"};
  if (!query.expand && query.skipToken) return ODataProblem{400, "one document has no further page"};
  if (query.expand && query.expand->navigation != "Translations")
    return ODataProblem{query.expand->navigation == "Versions" ? 501 : 400,
                        "$expand takes Translations here"};
  return std::nullopt;
}

/// Writes one page of the translations that a document has, in the order of their languages.
/// @return what is wrong with the question
std::optional<ODataProblem> WriteTranslations(JsonText& json, const ServiceContext& context,
                                              const Request& request, const DocumentRow& document,
                                              const ODataQuery& query) {
  const auto list = Translations(TranslatedXliffOf(context.database, document).value_or(0));
  ODataQuery rows;
  rows.select = query.expand->select;
  rows.order = {{"AuthoringLanguage", false}};
  ODataProblem problem;
  const auto plan = PlanODataQuery(rows, *list.entity, problem);
  if (!plan) return problem;
  json.Key("Translations").StartArray();
  const auto write = [&](const ODataRow& row) {
    json.StartObject();
    WriteDocumentMembers(json, row);
    json.EndObject();
  };
  const auto next =
      ReadODataPage(context.database, {list, *plan, query.skipToken, PageLimit(context, request)}, write);
  if (!next) return ODataProblem{400, "the $skiptoken is none of this server's"};
  json.EndArray();
  if (!next->empty()) json.Member("@odata.nextLink", NextPageLink(context, request, *next));
  return std::nullopt;
}

/// The document itself, which each page of its translations repeats.
Response OneDocumentAnswer(const ServiceContext& context, const Request& request) {
  auto document = FindAddressed(context, request);
  if (!document) return document.TakeRefusal();
  ODataProblem problem;
  const auto query = ParseODataQuery(request.query, problem);
  if (!query) return ODataRefusal(problem);
  if (const auto refused = RefuseListOptions(*query)) return ODataRefusal(*refused);
  const auto list = OneDocument(document->key);
  ODataQuery itself;
  itself.select = query->select;
  const auto plan = PlanODataQuery(itself, *list.entity, problem);
  if (!plan) return ODataRefusal(problem);

  JsonText json;
  json.StartObject().Member("@odata.context", "$metadata#DynamicDocuments/$entity");
  const auto write = [&](const ODataRow& row) { WriteDocumentMembers(json, row); };
  static_cast<void>(ReadODataPage(context.database, {list, *plan, std::nullopt, 1}, write));
  if (query->expand) {
    if (const auto refused = WriteTranslations(json, context, request, *document, *query))
      return ODataRefusal(*refused);
  }
  json.EndObject();
  return ODataResponse(json.Take());
}

Response SourceXliff(const ServiceContext& context, const Request& request) {
  auto document = FindAddressed(context, request);
  if (!document) return document.TakeRefusal();
  ODataProblem problem;
  const auto query = ParseODataQuery(request.query, problem);
  if (!query) return ODataRefusal(problem);
  if (query->expand || query->latestVersionOnly)
    return ODataRefusal({400, "the source XLIFF is listed without $expand and without a search"});
  const auto xliff = SourceXliffOf(context.database, *document);
  return AnswerODataList(context, request, OneDocument(xliff.value_or(0)), *query, {});
}

Response CreateLink(const ServiceContext& context, const Request& request, JsonValue body) {
  if (!OffersVersion(context.options.generation, "DynamicDocMgmt", request.Path("version"))) {
    return ErrorResponse(404, "no-such-resource", "this server doesn't offer this version of the service");
  }
  std::string problem, documentId, xliffId;
  JsonMembers members(body, problem);
  members.Text("oidForQ7zkDocument", documentId, Presence::Required)
      .Text("oidForXliffDocument", xliffId, Presence::Required);
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  auto document = FindDynamicDocument(context.database, documentId, request.user);
  if (!document) return document.TakeRefusal();
  auto xliff = FindDynamicDocument(context.database, xliffId, request.user);
  if (!xliff) return xliff.TakeRefusal();
  if (auto refusal = LinkXliff(context.database, *document, *xliff)) return std::move(*refusal);
  JsonText json;
  json.StartObject().Member("@odata.context", "$metadata#Edm.String").Member("value", "Success").EndObject();
  return ODataResponse(json.Take());
}

Response ChangeDocument(const ServiceContext& context, const Request& request, JsonValue body) {
  auto document = FindAddressed(context, request);
  if (!document) return document.TakeRefusal();
  constexpr const char* member = "ZVKDDEXTENDEDDOCTYPE";
  std::string problem, type;
  JsonMembers members(body, problem);
  members.Text(member, type, Presence::Required);
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  if (body.Size() != 1) return ErrorResponse(400, "bad-body", "nothing else than the type is changed");
  if (auto refusal = SetExtendedType(context.database, *document, type)) return std::move(*refusal);
  Response response;
  response.status = 204;
  return response;
}

}  // namespace

void AddTranslationRoutes(Router& router, const ServiceContext& context) {
  if (!HasOData(context.options.generation) || !context.options.translation) return;
  const std::string service = "servlet/odata/v{version}/DynamicDocMgmt/";
  router.Add(
      "GET", service + "DynamicDocuments('{id}')",
      [&context](const Request& request) { return OneDocumentAnswer(context, request); },
      "one document, with its translations by `?$expand=Translations`; see below");
  router.Add(
      "GET", service + "DynamicDocuments('{id}')/Xliff",
      [&context](const Request& request) { return SourceXliff(context, request); },
      "its source XLIFF, or nothing, in `value`");
  AddWrite(router, context,
           {service + "CreateXliffLink",
            "`oidForQ7zkDocument`, `oidForXliffDocument`: the text `Success` in `value`"},
           [&context](const Request& request, JsonValue body) { return CreateLink(context, request, body); });
  AddWrite(
      router, context,
      {service + "DynamicDocuments('{id}')",
       "`ZVKDDEXTENDEDDOCTYPE` and nothing else: 204; id and version stay", "PATCH"},
      [&context](const Request& request, JsonValue body) { return ChangeDocument(context, request, body); });
}

}  // namespace vantry_sim
