#include "simulator/store/workspace_store.h"

namespace vantry_sim {
namespace {

constexpr std::string_view kSelect =
    "SELECT w.id, w.oid, w.name, w.description, c.oid, c.id, u.id FROM workspaces w "
    "JOIN contexts c ON c.id = w.context JOIN users u ON u.id = w.owner ";

WorkspaceRow ReadRow(const Statement& statement) {
  return {statement.Integer(0), statement.Text(1),    statement.Text(2),   statement.Text(3),
          statement.Text(4),    statement.Integer(5), statement.Integer(6)};
}

}  // namespace

std::vector<WorkspaceRow> WorkspacesOf(Database& database, std::string_view context_oid,
                                       std::string_view user) {
  auto statement = database.Prepare(std::string(kSelect) + "WHERE c.oid = ?1 AND u.name = ?2 ORDER BY w.id");
  statement.Bind(context_oid, user);
  std::vector<WorkspaceRow> rows;
  while (statement.Step()) rows.push_back(ReadRow(statement));
  return rows;
}

std::optional<WorkspaceRow> FindWorkspace(Database& database, std::string_view oid, std::string_view user) {
  auto statement = database.Prepare(std::string(kSelect) + "WHERE w.oid = ?1 AND u.name = ?2");
  if (!statement.Bind(oid, user).Step()) return std::nullopt;
  return ReadRow(statement);
}

}  // namespace vantry_sim
