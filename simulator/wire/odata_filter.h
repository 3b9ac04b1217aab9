#pragma once

#include <optional>
#include <string_view>

#include "simulator/store/sql_text.h"
#include "simulator/wire/odata_entity.h"
#include "simulator/wire/odata_problem.h"

namespace vantry_sim {

/// Turns a $filter into a condition of SQL.
///
/// Comparisons are `Property eq 'text'`, joined by `and`, `or` and parentheses; an apostrophe inside a text
/// is doubled. Clients are known to leave it single: a filter that cannot be read otherwise, and that is one
/// comparison alone, has the text between its first and its last apostrophe. Length, depth and number of
/// comparisons are bounded.
/// @return nothing with `problem` filled: 400 for a filter that cannot be read or names what rows don't have,
/// 501 for an operator, function or property that this server doesn't evaluate
std::optional<SqlText> ParseODataFilter(std::string_view text, const ODataEntity& entity,
                                        ODataProblem& problem);

}  // namespace vantry_sim
