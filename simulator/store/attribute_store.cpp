#include "simulator/store/attribute_store.h"

namespace vantry_sim {

void SetAttribute(Database& database, std::int64_t iteration, std::string_view name, std::string_view value) {
  auto known = database.Prepare("SELECT 1 FROM attributes WHERE iteration = ?1 AND parameter_name = ?2");
  const bool hasOne = known.Bind(iteration, name).Step();
  database
      .Prepare(hasOne ? "UPDATE attributes SET value = ?3 WHERE iteration = ?1 AND parameter_name = ?2"
                      : "INSERT INTO attributes(iteration, position, parameter_name, attribute_name, "
                        "value_type, value) SELECT ?1, ifnull(max(position) + 1, 0), ?2, ?2, 'String', ?3 "
                        "FROM attributes WHERE iteration = ?1")
      .Bind(iteration, name, value)
      .Run();
}

bool RemoveAttribute(Database& database, std::int64_t iteration, std::string_view name) {
  auto statement = database.Prepare(
      "DELETE FROM attributes WHERE iteration = ?1 AND parameter_name = ?2 RETURNING position");
  const bool removed = statement.Bind(iteration, name).Step();
  if (removed) statement.Run();
  return removed;
}

void Touch(Database& database, std::int64_t iteration) {
  database.Prepare("UPDATE iterations SET modified = server_time() WHERE id = ?1").Bind(iteration).Run();
}

}  // namespace vantry_sim
