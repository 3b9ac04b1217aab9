#include "simulator/store/document_deletion.h"

#include <vector>

#include "simulator/store/iteration_writer.h"

namespace vantry_sim {
namespace {

/// Row ids that a statement with one parameter gives.
std::vector<std::int64_t> Keys(Database& database, std::string_view sql, std::int64_t parameter) {
  auto statement = database.Prepare(sql);
  statement.Bind(parameter);
  std::vector<std::int64_t> keys;
  while (statement.Step()) keys.push_back(statement.Integer(0));
  return keys;
}

}  // namespace

void DeleteIteration(Database& database, std::int64_t iteration, std::optional<std::int64_t> base) {
  if (base) {
    database.Prepare("UPDATE dependencies SET source = ?2 WHERE source = ?1").Bind(iteration, *base).Run();
  } else {
    database.Prepare("DELETE FROM dependencies WHERE source = ?1").Bind(iteration).Run();
  }
  DeleteParts(database, iteration);
  for (const char* sql :
       {"DELETE FROM workspace_documents WHERE iteration = ?1", "DELETE FROM checkouts WHERE working = ?1",
        "DELETE FROM xliff_links WHERE document = ?1 OR xliff = ?1"}) {
    database.Prepare(sql).Bind(iteration).Run();
  }
  auto statement = database.Prepare("DELETE FROM iterations WHERE id = ?1 RETURNING master");
  if (!statement.Bind(iteration).Step()) return;
  const std::int64_t master = statement.Integer(0);
  statement.Run();
  database
      .Prepare(
          "DELETE FROM translations WHERE (xliff = ?1 OR translated = ?1) "
          "AND NOT EXISTS (SELECT 1 FROM iterations WHERE master = ?1)")
      .Bind(master)
      .Run();
  database
      .Prepare(
          "DELETE FROM masters WHERE id = ?1 AND NOT EXISTS (SELECT 1 FROM iterations WHERE master = ?1)")
      .Bind(master)
      .Run();
}

void DeleteVersion(Database& database, const DocumentRow& version) {
  for (const std::int64_t working :
       Keys(database, "SELECT working FROM checkouts WHERE base = ?1", version.key)) {
    DeleteIteration(database, working, std::nullopt);
  }
  DeleteIteration(database, version.key, std::nullopt);
  if (!version.isLatest) return;
  for (const std::int64_t before : Keys(database,
                                        "SELECT id FROM iterations WHERE master = ?1 AND workspace IS NULL "
                                        "ORDER BY version_key DESC LIMIT 1",
                                        version.masterKey)) {
    database.Prepare("UPDATE iterations SET is_latest = 1 WHERE id = ?1").Bind(before).Run();
  }
}

void DeleteDocument(Database& database, std::int64_t master) {
  // A checkout refers to both its ends; the working copy goes first and takes it away.
  for (const std::int64_t iteration :
       Keys(database, "SELECT id FROM iterations WHERE master = ?1 ORDER BY workspace IS NULL, id", master)) {
    DeleteIteration(database, iteration, std::nullopt);
  }
}

}  // namespace vantry_sim
