#include <algorithm>
#include <charconv>

#include "simulator/routes/routes.h"
#include "simulator/store/translation_store.h"
#include "simulator/store/xliff_preferences.h"
#include "simulator/wire/json.h"
#include "simulator/wire/metadata.h"
#include "simulator/wire/odata_answers.h"

namespace vantry_sim {
namespace {

/// The row that a page begins with; nothing for a token that this server never gave.
std::optional<std::size_t> StartOf(const ODataQuery& query, std::size_t rows) {
  if (!query.skipToken) return 0;
  const std::string& token = *query.skipToken;
  std::size_t start = 0;
  const auto [end, code] = std::from_chars(token.data(), token.data() + token.size(), start);
  if (code != std::errc() || end != token.data() + token.size() || start >= rows) return std::nullopt;
  return start;
}

std::optional<ODataProblem> RefuseOptions(const Request& request, ODataQuery& query) {
  ODataProblem problem;
  auto parsed = ParseODataQuery(request.query, problem);
  if (!parsed) return problem;
  query = std::move(*parsed);
  for (const auto& [name, value] : request.query) {
    if (name != "$skiptoken") return ODataProblem{501, "preferences come whole, without " + name};
  }
  return std::nullopt;
}

Response Page(const ServiceContext& context, const Request& request, const ODataQuery& query,
              const std::vector<XliffPreference>& preferences) {
  const auto start = StartOf(query, preferences.size());
  if (!start) return ODataRefusal({400, "the $skiptoken is none of this server's"});
  const auto end = std::min<std::uint64_t>(preferences.size(), *start + PageLimit(context, request));
  JsonText json;
  json.StartObject().Member("@odata.context", "$metadata#ZVK.DynamicDocMgmt.XliffPreferences");
  json.Key("Preferences").StartArray();
  for (std::size_t i = *start; i < end; ++i) {
    json.StartObject().Member("Name", preferences[i].name).Member("Value", preferences[i].value).EndObject();
  }
  json.EndArray();
  if (end < preferences.size()) {
    json.Member("@odata.nextLink", NextPageLink(context, request, std::to_string(end)));
  }
  json.EndObject();
  return ODataResponse(json.Take());
}

Response Preferences(const ServiceContext& context, const Request& request) {
  if (!OffersVersion(context.options.generation, "DynamicDocMgmt", request.Path("version"))) {
    return ErrorResponse(404, "no-such-resource", "this server doesn't offer this version of the service");
  }
  const auto question = ParseXliffQuestion(request.Path("arguments"));
  if (!question) {
    return ODataRefusal({400, "XliffPreferences takes the texts oidForQ7zkDocument and sourceLanguage"});
  }
  ODataQuery query;
  if (const auto problem = RefuseOptions(request, query)) return ODataRefusal(*problem);
  auto document = FindDynamicDocument(context.database, question->document, request.user);
  if (!document) return document.TakeRefusal();
  return Page(context, request, query,
              XliffPreferencesFor(context.database, context.options, *document, question->language));
}

}  // namespace

void AddXliffPreferenceRoutes(Router& router, const ServiceContext& context) {
  if (!HasOData(context.options.generation) || !context.options.translation) return;
  router.Add(
      "GET", "servlet/odata/v{version}/DynamicDocMgmt/XliffPreferences({arguments})",
      [&context](const Request& request) { return Preferences(context, request); },
      "how a source XLIFF is to be uploaded; the arguments are "
      "`oidForQ7zkDocument='<id>',sourceLanguage='<language>'`");
}

}  // namespace vantry_sim
