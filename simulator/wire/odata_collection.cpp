#include "simulator/wire/odata_collection.h"

#include <algorithm>
#include <charconv>

#include "simulator/wire/uri.h"

namespace vantry_sim {
namespace {

/// The sort columns' values of a row, and its key.
struct Position {
  std::vector<std::string> values;
  std::int64_t key = 0;
};

std::string WriteToken(const Position& position) {
  std::string token = std::to_string(position.key);
  for (const std::string& value : position.values) token.append(",").append(PercentEncode(value));
  return token;
}

std::optional<Position> ReadToken(std::string_view token, std::size_t columns) {
  Position position;
  const auto end = token.find(',');
  const std::string_view key = token.substr(0, end);
  const auto [stop, code] = std::from_chars(key.data(), key.data() + key.size(), position.key);
  if (key.empty() || code != std::errc() || stop != key.data() + key.size()) return std::nullopt;
  while (token.find(',') != std::string_view::npos) {
    token.remove_prefix(token.find(',') + 1);
    auto value = PercentDecode(token.substr(0, token.find(',')));
    if (!value) return std::nullopt;
    position.values.push_back(std::move(*value));
  }
  if (position.values.size() != columns) return std::nullopt;
  return position;
}

/// The rows that share the position's first `shared` columns and come after it in the next one; with all
/// columns shared, those with a greater key. An index over the columns gives each such run from its start on.
SqlText RunAfter(const Position& position, const ODataPlan& plan, const ODataEntity& entity,
                 std::size_t shared) {
  SqlText sql;
  for (std::size_t i = 0; i < shared; ++i) {
    sql.Add(" AND ").Add(plan.sort[i].first).Add(" = ").Value(position.values[i]);
  }
  if (shared == plan.sort.size()) {
    sql.Add(" AND ").Add(entity.keyColumn).Add(" > ").Value(position.key);
  } else {
    sql.Add(" AND ").Add(plan.sort[shared].first).Add(plan.sort[shared].second ? " < " : " > ");
    sql.Value(position.values[shared]);
  }
  return sql;
}

SqlText SelectRun(const ODataCollection& collection, const ODataPlan& plan, const SqlText& run,
                  std::uint64_t limit) {
  const ODataEntity& entity = *collection.entity;
  SqlText sql;
  sql.Add("SELECT ").Add(entity.keyColumn);
  for (const auto& [column, descending] : plan.sort) sql.Add(", ").Add(column);
  for (const ODataProperty* property : plan.select) {
    sql.Add(", ").Add(property->column.empty() ? std::string_view("''") : property->column);
  }
  sql.Add(" FROM ").Add(collection.from).Add(" WHERE ").Add(collection.where);
  if (!plan.filter.empty()) sql.Add(" AND ").Add(plan.filter);
  sql.Add(run).Add(" ORDER BY ");
  for (const auto& [column, descending] : plan.sort) sql.Add(column).Add(descending ? " DESC, " : ", ");
  sql.Add(entity.keyColumn).Add(" LIMIT ").Value(static_cast<std::int64_t>(limit));
  return sql;
}

/// Reads one run of rows, `limit` at most. @return how many there were
std::uint64_t ReadRun(Database& database, const SqlText& sql, const ODataPlan& plan,
                      const std::function<void(const ODataRow&)>& row, Position& last) {
  Statement statement = sql.Prepare(database);
  std::uint64_t count = 0;
  ODataRow out;
  out.select = &plan.select;
  out.values.resize(plan.select.size());
  for (; statement.Step(); ++count) {
    out.key = statement.Integer(0);
    last.key = out.key;
    last.values.resize(plan.sort.size());
    int column = 1;
    for (std::string& value : last.values) value = statement.Text(column++);
    for (std::string& value : out.values) value = statement.Text(column++);
    row(out);
  }
  return count;
}

}  // namespace

std::optional<ODataPlan> PlanODataQuery(const ODataQuery& query, const ODataEntity& entity,
                                        ODataProblem& problem) {
  ODataPlan plan;
  plan.top = query.top;
  for (const ODataProperty& property : entity.properties) {
    const bool named =
        std::find(query.select.begin(), query.select.end(), property.name) != query.select.end();
    if (query.select.empty() || named) plan.select.push_back(&property);
  }
  for (const std::string& name : query.select) {
    if (entity.Find(name) != nullptr) continue;
    problem = {400, "$select names " + name + ", which these rows don't have"};
    return std::nullopt;
  }
  std::vector<ODataOrder> order = query.order;
  if (order.empty()) order.push_back({std::string(entity.defaultOrder), entity.defaultDescending});
  for (const ODataOrder& by : order) {
    const ODataProperty* property = entity.Find(by.property);
    if (property == nullptr || property->column.empty()) {
      problem = {property == nullptr ? 400 : 501, "rows are not sorted by " + by.property};
      return std::nullopt;
    }
    plan.sort.emplace_back(property->sortColumn.empty() ? property->column : property->sortColumn,
                           by.descending);
  }
  if (query.filter) {
    auto filter = ParseODataFilter(*query.filter, entity, problem);
    if (!filter) return std::nullopt;
    plan.filter = std::move(*filter);
  }
  return plan;
}

std::optional<std::string> ReadODataPage(Database& database, const ODataPage& page,
                                         const std::function<void(const ODataRow&)>& row) {
  const auto& [collection, plan, token, limit] = page;
  std::optional<Position> start;
  if (token) {
    start = ReadToken(*token, plan.sort.size());
    if (!start) return std::nullopt;
  }
  // The rows after a position come in runs: those that share most with it first.
  Position last = start.value_or(Position{});
  std::uint64_t count = 0;
  for (std::size_t run = 0; run <= (start ? plan.sort.size() : 0) && count < limit; ++run) {
    const SqlText after =
        start ? RunAfter(*start, plan, *collection.entity, plan.sort.size() - run) : SqlText();
    count += ReadRun(database, SelectRun(collection, plan, after, limit - count), plan, row, last);
  }
  if (count < limit || limit == 0) return std::string();
  // A page that was filled to the brim may still be the last one.
  bool more = false;
  for (std::size_t run = 0; run <= plan.sort.size() && !more; ++run) {
    const SqlText after = RunAfter(last, plan, *collection.entity, plan.sort.size() - run);
    more = SelectRun(collection, plan, after, 1).Prepare(database).Step();
  }
  return more ? WriteToken(last) : std::string();
}

}  // namespace vantry_sim
