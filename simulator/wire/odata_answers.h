#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/routes/service_context.h"
#include "simulator/wire/json.h"
#include "simulator/wire/messages.h"
#include "simulator/wire/odata_collection.h"
#include "simulator/wire/odata_problem.h"
#include "simulator/wire/odata_query.h"

namespace vantry_sim {

/// An OData answer with a JSON body.
Response ODataResponse(std::string body);

/// The refusal of a query.
Response ODataRefusal(const ODataProblem& problem);

/// The most rows of a page: the server's page size, or what the client's Prefer header asks for if it is
/// less.
std::uint64_t PageLimit(const ServiceContext& context, const Request& request);

/// The absolute address where a list goes on: the same question, put to the rows after the token.
/// @param restOfTop rows of the client's $top that are still to come; nothing without one
std::string NextPageLink(const ServiceContext& context, const Request& request, const std::string& token,
                         std::optional<std::uint64_t> restOfTop = std::nullopt);

/// What the rows of one list have beyond their columns.
struct ODataRowParts {
  /// The value of a property without a column.
  std::function<std::string(std::string_view property, std::int64_t key)> computed;
  /// Writes the member that an $expand asked for; empty for lists without navigations.
  std::function<void(JsonText& json, std::int64_t key, const ODataExpand& expand)> expanded;
};

/// Answers a list, one page of it: rows, and the absolute address of the next page while there is one.
///
/// A page has as many rows as the server's page size and the client's Prefer header allow, whichever is less.
/// @param query what the client asked; its $expand was checked by the caller
Response AnswerODataList(const ServiceContext& context, const Request& request,
                         const ODataCollection& collection, const ODataQuery& query,
                         const ODataRowParts& parts);

}  // namespace vantry_sim
