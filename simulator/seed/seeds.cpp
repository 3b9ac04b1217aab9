#include "simulator/seed/seeds.h"

#include "simulator/wire/authentication.h"

namespace vantry_sim {
namespace {

bool IsSeeded(Database& database) {
  auto statement = database.Prepare("SELECT 1 FROM facts WHERE key = 'seed'");
  return statement.Step();
}

const char* WordOf(Seed::Kind kind) {
  switch (kind) {
    case Seed::Kind::kDemo:
      return "demo";
    case Seed::Kind::kBulk:
      return "bulk";
    case Seed::Kind::kEmpty:
      break;
  }
  return "empty";
}

}  // namespace

void SeedOnce(Database& database, ContentStore& contents, const Seed& seed) {
  if (IsSeeded(database)) return;
  Transaction transaction(database);
  SeedWriter writer(database, contents);
  if (seed.kind == Seed::Kind::kDemo) SeedDemo(writer, seed.large_bytes);
  if (seed.kind == Seed::Kind::kBulk) SeedBulk(writer, seed.bulk_documents);
  database.Prepare("INSERT OR IGNORE INTO users(name, full_name) VALUES(?1, ?1)").Bind(kOpenServerUser).Run();
  database.Prepare("INSERT INTO facts(key, value) VALUES('seed', ?1)").Bind(WordOf(seed.kind)).Run();
  transaction.Commit();
}

void EnsureUsers(Database& database, const std::vector<UserCredentials>& users) {
  auto statement = database.Prepare("INSERT OR IGNORE INTO users(name, full_name) VALUES(?1, ?1)");
  for (const UserCredentials& user : users) statement.Bind(user.name).Run();
}

}  // namespace vantry_sim
