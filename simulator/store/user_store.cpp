#include "simulator/store/user_store.h"

namespace vantry_sim {

std::int64_t UserKey(Database& database, std::string_view name) {
  database.Prepare("INSERT OR IGNORE INTO users(name, full_name) VALUES(?1, ?1)").Bind(name).Run();
  auto statement = database.Prepare("SELECT id FROM users WHERE name = ?1");
  return statement.Bind(name).Step() ? statement.Integer(0) : 0;
}

std::int64_t NextNumber(Database& database) {
  database.Prepare("UPDATE counters SET next = next + 1 WHERE name = 'id'").Run();
  auto statement = database.Prepare("SELECT next - 1 FROM counters WHERE name = 'id'");
  if (!statement.Step()) throw DatabaseError("the counter of ids is lost");
  return statement.Integer(0);
}

}  // namespace vantry_sim
