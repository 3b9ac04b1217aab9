#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simulator/store/database.h"
#include "simulator/store/sql_text.h"
#include "simulator/wire/odata_entity.h"
#include "simulator/wire/odata_filter.h"
#include "simulator/wire/odata_problem.h"
#include "simulator/wire/odata_query.h"

namespace vantry_sim {

/// Rows that can be asked for: all that `from` and `where` leave, as `entity` shows them.
struct ODataCollection {
  const ODataEntity* entity = nullptr;
  std::string from;  ///< after FROM
  SqlText where;     ///< the condition, without the client's $filter
};

/// A query held against its entity: what it names, these rows have.
struct ODataPlan {
  std::vector<const ODataProperty*> select;
  std::vector<std::pair<std::string_view, bool>>
      sort;  ///< column and whether it goes down; the key comes last
  SqlText filter;
  std::optional<std::uint64_t> top;
};

/// @return nothing with `problem` filled
std::optional<ODataPlan> PlanODataQuery(const ODataQuery& query, const ODataEntity& entity,
                                        ODataProblem& problem);

/// Which rows of a plan are read.
struct ODataPage {
  const ODataCollection& collection;
  const ODataPlan& plan;
  std::optional<std::string> token;  ///< of the page before; nothing for the first page
  std::uint64_t limit = 0;           ///< most rows to read
};

/// One row of a page.
struct ODataRow {
  std::int64_t key = 0;
  const std::vector<const ODataProperty*>* select = nullptr;
  std::vector<std::string> values;  ///< one for each of `select`, empty for those without a column
};

/// Reads the rows after a token, or the first ones without it, and hands each over.
///
/// A token names the last row that was given. The rows after it are found by their sort columns and never by
/// counting, so that page 100 costs what page 1 does where the columns have an index.
/// @return the token of the page after, empty after the last row; nothing for a token that this server never gave
/// for such a query
std::optional<std::string> ReadODataPage(Database& database, const ODataPage& page,
                                         const std::function<void(const ODataRow&)>& row);

}  // namespace vantry_sim
