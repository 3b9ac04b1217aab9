#include "simulator/store/workspace_store.h"

#include "simulator/store/user_store.h"

namespace vantry_sim {
namespace {

constexpr std::string_view select =
    "SELECT w.id, w.oid, w.name, w.description, c.oid, c.id, u.id FROM workspaces w "
    "JOIN contexts c ON c.id = w.context JOIN users u ON u.id = w.owner ";

WorkspaceRow ReadRow(const Statement& statement) {
  return {statement.Integer(0), statement.Text(1),    statement.Text(2),   statement.Text(3),
          statement.Text(4),    statement.Integer(5), statement.Integer(6)};
}

}  // namespace

std::vector<WorkspaceRow> WorkspacesOf(Database& database, std::string_view contextOid,
                                       std::string_view user) {
  auto statement = database.Prepare(std::string(select) + "WHERE c.oid = ?1 AND u.name = ?2 ORDER BY w.id");
  statement.Bind(contextOid, user);
  std::vector<WorkspaceRow> rows;
  while (statement.Step()) rows.push_back(ReadRow(statement));
  return rows;
}

WorkspaceRow MakeWorkspace(Database& database, std::int64_t context, std::string_view user,
                           std::string_view name, std::string_view description) {
  const std::string oid = "W" + std::to_string(NextNumber(database));
  database
      .Prepare("INSERT INTO workspaces(oid, context, owner, name, description) VALUES(?1, ?2, ?3, ?4, ?5)")
      .Bind(oid, context, UserKey(database, user), name, description)
      .Run();
  return FindWorkspace(database, oid, user).value_or(WorkspaceRow{});
}

std::optional<WorkspaceRow> FindWorkspace(Database& database, std::string_view oid, std::string_view user) {
  auto statement = database.Prepare(std::string(select) + "WHERE w.oid = ?1 AND u.name = ?2");
  if (!statement.Bind(oid, user).Step()) return std::nullopt;
  return ReadRow(statement);
}

}  // namespace vantry_sim
