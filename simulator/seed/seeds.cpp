#include "simulator/seed/seeds.h"

#include <stdexcept>

#include "simulator/seed/fixture_loader.h"
#include "simulator/seed/fixture_reader.h"
#include "simulator/wire/authentication.h"

namespace vantry_sim {
namespace {

const char* WordOf(Seed::Kind kind) {
  switch (kind) {
    case Seed::Kind::Demo:
      return "demo";
    case Seed::Kind::Bulk:
      return "bulk";
    case Seed::Kind::File:
      return "file";
    case Seed::Kind::Empty:
      break;
  }
  return "empty";
}

/// A place to put something into, and nothing in it.
void SeedEmpty(SeedWriter& writer) {
  const auto product = writer.AddContext(101, "Product", "Empty", "Kettenblitz");
  writer.AddFolder(201, product, 0, "Default");
}

void SeedFromFile(Database& database, ContentStore& contents, const std::string& file) {
  std::vector<FixtureProblem> problems;
  const auto fixture = ReadFixtureFile(file, problems);
  if (!fixture) throw std::runtime_error(TextOf(problems, file));
  LoadFixture(database, contents, *fixture);
}

}  // namespace

bool IsSeeded(Database& database) {
  auto statement = database.Prepare("SELECT 1 FROM facts WHERE key = 'seed'");
  return statement.Step();
}

void ForgetState(Database& database) {
  // What refers to others goes before what is referred to.
  for (const char* table : {"translations", "xliff_links", "application_versions", "uploads",
                            "ticket_streams", "tickets", "dependencies", "attributes", "contents",
                            "checkouts", "workspace_documents", "iterations", "masters", "workspaces"}) {
    database.Execute((std::string("DELETE FROM ") + table).c_str());
  }
  // A folder refers to the one around it, which is older.
  database.Execute(
      "PRAGMA defer_foreign_keys = ON; DELETE FROM folders; DELETE FROM contexts; DELETE FROM users;");
}

Seeding SeedOnce(Database& database, ContentStore& contents, const Seed& seed, bool toBeKept) {
  if (IsSeeded(database)) return Seeding::Before;
  Transaction transaction(database);
  SeedWriter writer(database, contents);
  if (seed.kind == Seed::Kind::Empty) SeedEmpty(writer);
  if (seed.kind == Seed::Kind::Demo) SeedDemo(writer, seed.largeBytes);
  if (seed.kind == Seed::Kind::Bulk) SeedBulk(writer, seed.bulk);
  if (seed.kind == Seed::Kind::File) SeedFromFile(database, contents, seed.file);
  database.Prepare("INSERT OR IGNORE INTO users(name, full_name) VALUES(?1, ?1)").Bind(openServerUser).Run();
  database.Prepare("INSERT INTO facts(key, value) VALUES('seed', ?1)").Bind(WordOf(seed.kind)).Run();
  if (toBeKept) database.Execute("INSERT INTO facts(key, value) VALUES('seed-to-be-kept', '')");
  transaction.Commit();
  return Seeding::Done;
}

bool IsSeedToBeKept(Database& database) {
  auto statement = database.Prepare("SELECT 1 FROM facts WHERE key = 'seed-to-be-kept'");
  return statement.Step();
}

void NoteKeptSeed(Database& database) {
  database.Execute("DELETE FROM facts WHERE key = 'seed-to-be-kept'");
}

void EnsureUsers(Database& database, const std::vector<UserCredentials>& users) {
  auto statement = database.Prepare("INSERT OR IGNORE INTO users(name, full_name) VALUES(?1, ?1)");
  for (const UserCredentials& user : users) statement.Bind(user.name).Run();
}

}  // namespace vantry_sim
