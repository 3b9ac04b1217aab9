#include "simulator/wire/odata_answers.h"

#include <algorithm>

#include "simulator/wire/uri.h"

namespace vantry_sim {
namespace {

void WriteRow(JsonText& json, const ODataRow& row, const ODataQuery& query, const ODataRowParts& parts) {
  json.StartObject();
  for (std::size_t i = 0; i < row.select->size(); ++i) {
    const ODataProperty& property = *(*row.select)[i];
    json.Member(property.name,
                property.column.empty() ? parts.computed(property.name, row.key) : row.values[i]);
  }
  if (query.expand) parts.expanded(json, row.key, *query.expand);
  json.EndObject();
}

}  // namespace

std::uint64_t PageLimit(const ServiceContext& context, const Request& request) {
  const std::uint64_t own = context.options.pageSize;
  return std::min(own, PreferredPageSize(request.prefer).value_or(own));
}

std::string NextPageLink(const ServiceContext& context, const Request& request, const std::string& token,
                         std::optional<std::uint64_t> restOfTop) {
  std::string link = PageBaseUrl(context, request) + request.path + "?";
  for (const auto& [name, value] : request.query) {
    if (name == "$skiptoken" || name == "$top") continue;
    link.append(name).append("=").append(PercentEncode(value)).append("&");
  }
  if (restOfTop) link.append("$top=").append(std::to_string(*restOfTop)).append("&");
  return link.append("$skiptoken=").append(PercentEncode(token));
}

Response ODataResponse(std::string body) {
  Response response;
  response.contentType = "application/json;odata.metadata=minimal";
  response.headers.emplace_back("OData-Version", "4.0");
  response.body = std::move(body);
  return response;
}

Response ODataRefusal(const ODataProblem& problem) {
  return ErrorResponse(problem.status, problem.status == 501 ? "not-implemented" : "bad-query",
                       problem.reason);
}

Response AnswerODataList(const ServiceContext& context, const Request& request,
                         const ODataCollection& collection, const ODataQuery& query,
                         const ODataRowParts& parts) {
  ODataProblem problem;
  const auto plan = PlanODataQuery(query, *collection.entity, problem);
  if (!plan) return ODataRefusal(problem);
  std::uint64_t limit = PageLimit(context, request);
  if (plan->top) limit = std::min(limit, *plan->top);

  JsonText json;
  json.StartObject().Member("@odata.context", "$metadata").Key("value").StartArray();
  std::uint64_t rows = 0;
  const auto write = [&](const ODataRow& row) {
    ++rows;
    WriteRow(json, row, query, parts);
  };
  const auto next = ReadODataPage(context.database, {collection, *plan, query.skipToken, limit}, write);
  if (!next) return ODataRefusal({400, "the $skiptoken is none of this server's"});
  json.EndArray();
  const bool topReached = plan->top && rows >= *plan->top;
  if (!next->empty() && !topReached) {
    std::optional<std::uint64_t> rest = plan->top;
    if (rest) *rest -= rows;
    json.Member("@odata.nextLink", NextPageLink(context, request, *next, rest));
  }
  json.EndObject();
  Response response = ODataResponse(json.Take());
  if (PreferredPageSize(request.prefer))
    response.headers.emplace_back("Preference-Applied", "odata.maxpagesize=" + std::to_string(limit));
  return response;
}

}  // namespace vantry_sim
