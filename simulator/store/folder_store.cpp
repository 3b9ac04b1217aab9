#include "simulator/store/folder_store.h"

#include "simulator/wire/forbidden_characters.h"

namespace vantry_sim {
namespace {

std::vector<FolderRow> ReadFolders(Statement& statement) {
  std::vector<FolderRow> rows;
  while (statement.Step()) rows.push_back({statement.Integer(0), statement.Text(1), statement.Text(2)});
  return rows;
}

std::optional<FolderRow> Child(Database& database, std::int64_t context, std::int64_t parent,
                               std::string_view name) {
  auto statement = database.Prepare(
      "SELECT id, oid, name FROM folders WHERE context = ?1 AND ifnull(parent, 0) = ?2 AND name = ?3");
  if (!statement.Bind(context, parent, name).Step()) return std::nullopt;
  return FolderRow{statement.Integer(0), statement.Text(1), statement.Text(2)};
}

/// The folder at the path below a root.
std::optional<FolderRow> Descend(Database& database, std::int64_t context, FolderRow folder,
                                 std::string_view path) {
  while (!path.empty()) {
    const auto slash = path.find('/');
    const std::string_view name = path.substr(0, slash);
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    if (name.empty()) continue;
    auto child = Child(database, context, folder.key, name);
    if (!child) child = Child(database, context, folder.key, UnescapeForbidden(name));
    if (!child) return std::nullopt;
    folder = std::move(*child);
  }
  return folder;
}

}  // namespace

std::optional<std::int64_t> ContextKey(Database& database, std::string_view oid, std::string_view kind) {
  auto statement = database.Prepare("SELECT id FROM contexts WHERE oid = ?1 AND (?2 = '' OR kind = ?2)");
  if (!statement.Bind(oid, kind).Step()) return std::nullopt;
  return statement.Integer(0);
}

std::vector<FolderRow> RootFolders(Database& database, std::int64_t context) {
  auto statement = database.Prepare(
      "SELECT id, oid, name FROM folders WHERE context = ?1 AND ifnull(parent, 0) = 0 "
      "ORDER BY name <> 'Default', name");
  return ReadFolders(statement.Bind(context));
}

std::vector<FolderRow> SubFolders(Database& database, std::int64_t folder) {
  auto statement = database.Prepare("SELECT id, oid, name FROM folders WHERE parent = ?1 ORDER BY name");
  return ReadFolders(statement.Bind(folder));
}

std::optional<FolderRow> FindFolderByPath(Database& database, std::int64_t context, std::string_view path) {
  for (FolderRow& root : RootFolders(database, context)) {
    if (auto found = Descend(database, context, std::move(root), path)) return found;
  }
  return std::nullopt;
}

std::optional<std::int64_t> FindFolderByIds(Database& database, std::int64_t context,
                                            const std::vector<std::string>& oids) {
  std::int64_t parent = 0;
  for (const std::string& oid : oids) {
    auto statement =
        database.Prepare("SELECT id FROM folders WHERE oid = ?1 AND context = ?2 AND ifnull(parent, 0) = ?3");
    if (!statement.Bind(oid, context, parent).Step()) return std::nullopt;
    parent = statement.Integer(0);
  }
  return parent;
}

std::optional<FolderPlace> FindFolder(Database& database, std::string_view oid) {
  auto statement = database.Prepare("SELECT id, context FROM folders WHERE oid = ?1");
  if (!statement.Bind(oid).Step()) return std::nullopt;
  return FolderPlace{statement.Integer(0), statement.Integer(1)};
}

}  // namespace vantry_sim
