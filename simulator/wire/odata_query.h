#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/wire/messages.h"
#include "simulator/wire/odata_problem.h"

namespace vantry_sim {

/// One property of an $orderby.
struct ODataOrder {
  std::string property;
  bool descending = false;
};

/// The one navigation of an $expand, with its own options.
struct ODataExpand {
  std::string navigation;
  std::uint32_t levels = 1;         ///< `max` reads as the largest number
  std::vector<std::string> select;  ///< empty: all properties
};

/// The query options of a request, separated but not yet held against what the rows have.
struct ODataQuery {
  std::optional<std::string> filter;
  std::vector<std::string> select;  ///< empty: all properties
  std::vector<ODataOrder> order;
  std::optional<std::uint64_t> top;
  std::optional<ODataExpand> expand;
  std::optional<std::string> skipToken;
  bool latestVersionOnly = false;  ///< zvk.search.latestversion=true
};

/// Reads the query options of a request.
/// @return nothing with `problem` filled: 400 for an option that cannot be read, comes twice or is unknown,
/// 501 for one that OData has and this server hasn't
std::optional<ODataQuery> ParseODataQuery(const QueryParameters& parameters, ODataProblem& problem);

/// The rows that a client wants in a page at most, by its Prefer header; nothing without a usable number.
std::optional<std::uint64_t> PreferredPageSize(std::string_view prefer);

}  // namespace vantry_sim
