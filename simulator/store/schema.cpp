#include "simulator/store/schema.h"

#include <string>

namespace vantry_sim {
namespace {

/// Each entry leads from the form with its index to the next; a published entry is never changed again.
///
/// `oid` is the id that the wire shows. A document on the wire is an iteration; what its iterations share
/// is in `masters`. A working copy is an iteration with a workspace; where it was taken from is in
/// `checkouts`.
constexpr const char* steps[] = {
    R"sql(
CREATE TABLE facts(key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;

CREATE TABLE users(id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, full_name TEXT NOT NULL);

CREATE TABLE contexts(
  id INTEGER PRIMARY KEY,
  oid TEXT NOT NULL UNIQUE,
  kind TEXT NOT NULL CHECK(kind IN ('Product', 'Library', 'Project', 'Site', 'Organization')),
  name TEXT NOT NULL,
  organization TEXT NOT NULL);
CREATE INDEX contexts_by_name ON contexts(name);

-- A folder without a parent is a root of its context.
CREATE TABLE folders(
  id INTEGER PRIMARY KEY,
  oid TEXT NOT NULL UNIQUE,
  context INTEGER NOT NULL REFERENCES contexts(id),
  parent INTEGER REFERENCES folders(id),
  name TEXT NOT NULL);
CREATE UNIQUE INDEX folders_by_place ON folders(context, ifnull(parent, 0), name);
CREATE INDEX folders_by_parent ON folders(parent);

CREATE TABLE workspaces(
  id INTEGER PRIMARY KEY,
  oid TEXT NOT NULL UNIQUE,
  context INTEGER NOT NULL REFERENCES contexts(id),
  owner INTEGER NOT NULL REFERENCES users(id),
  name TEXT NOT NULL,
  description TEXT NOT NULL,
  UNIQUE(context, owner, name));

CREATE TABLE masters(
  id INTEGER PRIMARY KEY,
  oid TEXT NOT NULL UNIQUE,
  service TEXT NOT NULL CHECK(service IN ('dynamic', 'cad')),
  name TEXT NOT NULL,
  number TEXT NOT NULL,
  category TEXT NOT NULL,
  sub_category TEXT NOT NULL,
  cad_name TEXT NOT NULL,
  authoring_application TEXT NOT NULL);
CREATE INDEX masters_by_number ON masters(number);
CREATE INDEX masters_by_cad_name ON masters(cad_name);

CREATE TABLE iterations(
  id INTEGER PRIMARY KEY,
  oid TEXT NOT NULL UNIQUE,
  master INTEGER NOT NULL REFERENCES masters(id),
  context INTEGER NOT NULL REFERENCES contexts(id),
  folder INTEGER REFERENCES folders(id),
  workspace INTEGER REFERENCES workspaces(id),
  revision TEXT NOT NULL,
  iteration INTEGER NOT NULL,
  is_latest INTEGER NOT NULL,
  auth_app_version TEXT NOT NULL,
  nd_version TEXT NOT NULL);
CREATE INDEX iterations_by_master ON iterations(master);
CREATE INDEX iterations_by_folder ON iterations(folder, is_latest);
CREATE INDEX iterations_by_workspace ON iterations(workspace) WHERE workspace IS NOT NULL;

-- What a user has added to a workspace without checking it out.
CREATE TABLE workspace_documents(
  workspace INTEGER NOT NULL REFERENCES workspaces(id),
  iteration INTEGER NOT NULL REFERENCES iterations(id),
  PRIMARY KEY(workspace, iteration)) WITHOUT ROWID;

CREATE TABLE checkouts(
  base INTEGER PRIMARY KEY REFERENCES iterations(id),
  working INTEGER NOT NULL UNIQUE REFERENCES iterations(id),
  workspace INTEGER NOT NULL REFERENCES workspaces(id),
  user INTEGER NOT NULL REFERENCES users(id));

-- The bytes of a stream lie in the file content/<id>.
CREATE TABLE streams(id INTEGER PRIMARY KEY, size INTEGER NOT NULL);

CREATE TABLE contents(
  id INTEGER PRIMARY KEY,
  oid TEXT NOT NULL UNIQUE,
  iteration INTEGER NOT NULL REFERENCES iterations(id),
  role TEXT NOT NULL CHECK(role IN ('primary', 'secondary')),
  position INTEGER NOT NULL,
  category TEXT NOT NULL,
  file_name TEXT NOT NULL,
  is_forwardable INTEGER NOT NULL,
  is_stale INTEGER NOT NULL,
  is_hidden INTEGER NOT NULL,
  stream INTEGER REFERENCES streams(id),
  UNIQUE(iteration, role, position));

CREATE TABLE attributes(
  iteration INTEGER NOT NULL REFERENCES iterations(id),
  position INTEGER NOT NULL,
  parameter_name TEXT NOT NULL,
  attribute_name TEXT NOT NULL,
  value_type TEXT NOT NULL,
  value TEXT NOT NULL,
  PRIMARY KEY(iteration, position)) WITHOUT ROWID;

CREATE TABLE dependencies(
  iteration INTEGER NOT NULL REFERENCES iterations(id),
  position INTEGER NOT NULL,
  as_stored_child_name TEXT NOT NULL,
  is_direct INTEGER NOT NULL,
  source INTEGER NOT NULL REFERENCES iterations(id),
  revision_number INTEGER NOT NULL,
  is_place_holder INTEGER NOT NULL,
  has_complete_dependencies INTEGER NOT NULL,
  PRIMARY KEY(iteration, position)) WITHOUT ROWID;

-- Bytes that were uploaded and that no document names yet; the receipt proves who uploaded them.
CREATE TABLE uploads(
  stream INTEGER PRIMARY KEY REFERENCES streams(id),
  user INTEGER NOT NULL REFERENCES users(id),
  receipt TEXT NOT NULL UNIQUE,
  file_name TEXT NOT NULL);

CREATE TABLE application_versions(
  application TEXT NOT NULL,
  version TEXT NOT NULL,
  PRIMARY KEY(application, version)) WITHOUT ROWID;

-- Which XLIFF document belongs to which source, and the translations that came of it.
CREATE TABLE translations(
  source INTEGER NOT NULL REFERENCES iterations(id),
  language TEXT NOT NULL,
  xliff INTEGER NOT NULL REFERENCES iterations(id),
  is_published INTEGER NOT NULL,
  PRIMARY KEY(source, language)) WITHOUT ROWID;
)sql",
    R"sql(
-- The master's service, repeated: a folder of a million documents is listed one service at a time.
ALTER TABLE iterations ADD COLUMN service TEXT NOT NULL DEFAULT 'dynamic';
UPDATE iterations SET service = (SELECT m.service FROM masters m WHERE m.id = iterations.master);
ALTER TABLE iterations ADD COLUMN modified TEXT NOT NULL DEFAULT '2026-01-05T08:00:00Z';

-- Sorts as versions do: revisions count A to Z and on with AA, and iteration 10 comes after 9.
ALTER TABLE iterations ADD COLUMN version_key TEXT
  AS (printf('%04d%s.%010d', length(revision), revision, iteration)) VIRTUAL;

DROP INDEX iterations_by_folder;
CREATE INDEX iterations_in_folder ON iterations(folder, service, version_key DESC, id)
  WHERE is_latest = 1 AND workspace IS NULL;
CREATE INDEX iterations_by_service ON iterations(service, version_key DESC, id);
)sql",
    R"sql(
-- Numbers for the ids of what is made at run time; seeds use smaller ones.
CREATE TABLE counters(name TEXT PRIMARY KEY, next INTEGER NOT NULL) WITHOUT ROWID;
INSERT INTO counters VALUES('id', 10000001);

-- Where a document that has never been checked in will be.
ALTER TABLE iterations ADD COLUMN target_folder INTEGER REFERENCES folders(id);
ALTER TABLE iterations ADD COLUMN comment TEXT NOT NULL DEFAULT '';
ALTER TABLE masters ADD COLUMN type_id TEXT NOT NULL DEFAULT '';

CREATE INDEX dependencies_by_source ON dependencies(source);
CREATE INDEX workspace_documents_by_iteration ON workspace_documents(iteration);
CREATE INDEX translations_by_xliff ON translations(xliff);

-- A permission for one upload, and the streams that it may fill.
CREATE TABLE tickets(
  id INTEGER PRIMARY KEY,
  token TEXT NOT NULL UNIQUE,
  user INTEGER NOT NULL REFERENCES users(id),
  master_url TEXT NOT NULL,
  created INTEGER NOT NULL);
CREATE TABLE ticket_streams(
  ticket INTEGER NOT NULL REFERENCES tickets(id),
  stream INTEGER NOT NULL UNIQUE,
  file_name TEXT NOT NULL,
  PRIMARY KEY(ticket, file_name)) WITHOUT ROWID;
)sql",
    R"sql(
-- The source XLIFF of a document is one iteration of the XLIFF document, and stays so until it is linked again.
DROP TABLE translations;
CREATE TABLE xliff_links(
  document INTEGER PRIMARY KEY REFERENCES iterations(id),
  xliff INTEGER NOT NULL REFERENCES iterations(id));
CREATE INDEX xliff_links_by_xliff ON xliff_links(xliff);

-- The documents, whatever their iteration, that were made of a source XLIFF by translating it.
CREATE TABLE translations(
  xliff INTEGER NOT NULL REFERENCES masters(id),
  translated INTEGER NOT NULL UNIQUE REFERENCES masters(id),
  PRIMARY KEY(xliff, translated)) WITHOUT ROWID;
)sql",
    R"sql(
-- The columns of the key come first: where another one is between them, SQLite's integrity check takes
-- values of a table without row ids for NULL.
CREATE TABLE ordered_ticket_streams(
  ticket INTEGER NOT NULL REFERENCES tickets(id),
  file_name TEXT NOT NULL,
  stream INTEGER NOT NULL UNIQUE,
  PRIMARY KEY(ticket, file_name)) WITHOUT ROWID;
INSERT INTO ordered_ticket_streams SELECT ticket, file_name, stream FROM ticket_streams;
DROP TABLE ticket_streams;
ALTER TABLE ordered_ticket_streams RENAME TO ticket_streams;
)sql",
    R"sql(
-- The number that the bytes of a generated stream were made from; nothing for any other stream.
ALTER TABLE streams ADD COLUMN generator INTEGER;
)sql",
};

constexpr std::int64_t newest = std::size(steps);

std::int64_t FormOf(Database& database) {
  auto statement = database.Prepare("PRAGMA user_version");
  return statement.Step() ? statement.Integer(0) : 0;
}

}  // namespace

void EnsureSchema(Database& database) {
  const std::int64_t form = FormOf(database);
  if (form == newest) return;
  if (form > newest || form < 0) throw DatabaseError("the data directory is of a newer vantry-sim");
  Transaction transaction(database);
  for (std::int64_t step = form; step < newest; ++step) database.Execute(steps[step]);
  database.Execute(("PRAGMA user_version = " + std::to_string(newest)).c_str());
  transaction.Commit();
}

}  // namespace vantry_sim
