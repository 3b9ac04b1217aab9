#include "simulator/store/document_store.h"

namespace vantry_sim {
namespace {

/// All columns of a DocumentRow. A checkout shows on both its ends, the base and the working copy.
constexpr std::string_view select = R"sql(
SELECT i.id, i.oid, i.revision, i.iteration, i.auth_app_version, i.nd_version, i.is_latest,
       EXISTS(SELECT 1 FROM dependencies d WHERE d.iteration = i.id),
       u.name, w.name, c.oid, c.name, c.kind,
       m.id, m.oid, m.name, m.number, m.category, m.sub_category, m.cad_name, m.authoring_application,
       i.folder, f.oid, f.name, i.workspace, k.base, c.id, m.service
FROM iterations i
JOIN masters m ON m.id = i.master
JOIN contexts c ON c.id = i.context
LEFT JOIN folders f ON f.id = i.folder
LEFT JOIN checkouts k ON k.base = CASE WHEN i.workspace IS NULL THEN i.id
                                       ELSE (SELECT base FROM checkouts WHERE working = i.id) END
LEFT JOIN users u ON u.id = k.user
LEFT JOIN workspaces w ON w.id = k.workspace
LEFT JOIN workspaces own ON own.id = i.workspace
LEFT JOIN users owner ON owner.id = own.owner
)sql";

/// Revisions count A to Z and on with AA: the longer one is the newer.
constexpr std::string_view newestFirst =
    " ORDER BY length(i.revision) DESC, i.revision DESC, i.iteration DESC, i.id DESC";

DocumentRow ReadRow(const Statement& statement) {
  DocumentRow row;
  int column = 0;
  row.key = statement.Integer(column++);
  row.oid = statement.Text(column++);
  row.revision = statement.Text(column++);
  row.iteration = statement.Integer(column++);
  row.authAppVersion = statement.Text(column++);
  row.ndVersion = statement.Text(column++);
  row.isLatest = statement.Integer(column++) != 0;
  row.isDerived = statement.Integer(column++) != 0;
  row.checkoutUser = statement.Text(column++);
  row.checkoutWorkspace = statement.Text(column++);
  row.contextOid = statement.Text(column++);
  row.contextName = statement.Text(column++);
  row.contextKind = statement.Text(column++);
  row.masterKey = statement.Integer(column++);
  row.masterOid = statement.Text(column++);
  row.masterName = statement.Text(column++);
  row.number = statement.Text(column++);
  row.category = statement.Text(column++);
  row.subCategory = statement.Text(column++);
  row.cadName = statement.Text(column++);
  row.authoringApplication = statement.Text(column++);
  if (!statement.IsNull(column)) row.folderKey = statement.Integer(column);
  ++column;
  row.folderOid = statement.Text(column++);
  row.folderName = statement.Text(column++);
  if (!statement.IsNull(column)) row.workspaceKey = statement.Integer(column);
  ++column;
  if (!statement.IsNull(column)) row.checkoutBaseKey = statement.Integer(column);
  ++column;
  row.contextKey = statement.Integer(column++);
  row.service = statement.Text(column++);
  return row;
}

std::vector<DocumentRow> ReadRows(Statement& statement) {
  std::vector<DocumentRow> rows;
  while (statement.Step()) rows.push_back(ReadRow(statement));
  return rows;
}

std::string Query(std::string_view condition) {
  return std::string(select).append(condition);
}

std::string_view ColumnOf(DocumentProperty property) {
  switch (property) {
    case DocumentProperty::CadName:
      return "m.cad_name";
    case DocumentProperty::Number:
      return "m.number";
    case DocumentProperty::Name:
      return "m.name";
  }
  return "m.cad_name";
}

}  // namespace

std::optional<DocumentRow> FindDocument(Database& database, std::string_view oid, std::string_view user) {
  static const std::string statementText =
      Query("WHERE i.oid = ?1 AND (i.workspace IS NULL OR owner.name = ?2)");
  auto statement = database.Prepare(statementText);
  if (!statement.Bind(oid, user).Step()) return std::nullopt;
  return ReadRow(statement);
}

std::vector<DocumentRow> VersionsOf(Database& database, const DocumentRow& document, std::string_view user) {
  static const std::string statementText =
      Query("WHERE i.master = ?1 AND i.workspace IS NULL").append(newestFirst);
  auto statement = database.Prepare(statementText);
  auto rows = ReadRows(statement.Bind(document.masterKey));
  if (!rows.empty()) return rows;
  if (auto alone = FindDocument(database, document.oid, user)) rows.push_back(std::move(*alone));
  return rows;
}

std::vector<DocumentRow> SearchByNumber(Database& database, std::string_view number,
                                        std::string_view contextOid, std::string_view user) {
  static const std::string statementText =
      Query("WHERE m.number = ?1 AND (?2 = '' OR c.oid = ?2) AND (i.workspace IS NULL OR owner.name = ?3)")
          .append(newestFirst);
  auto statement = database.Prepare(statementText);
  return ReadRows(statement.Bind(number, contextOid, user));
}

std::vector<DocumentRow> DocumentsInWorkspace(Database& database, std::int64_t workspaceKey) {
  static const std::string statementText =
      Query("WHERE i.id IN (SELECT iteration FROM workspace_documents WHERE workspace = ?1) ORDER BY i.id");
  auto statement = database.Prepare(statementText);
  return ReadRows(statement.Bind(workspaceKey));
}

std::vector<DocumentRow> FindLatestByProperty(Database& database, DocumentProperty property,
                                              std::string_view value) {
  const std::string sql = Query("WHERE ")
                              .append(ColumnOf(property))
                              .append(" = ?1 AND i.is_latest = 1 AND i.workspace IS NULL ORDER BY i.id");
  auto statement = database.Prepare(sql);
  return ReadRows(statement.Bind(value));
}

std::vector<ContentRow> ContentsOf(Database& database, std::int64_t iterationKey, ContentRole role) {
  auto statement = database.Prepare(
      "SELECT n.oid, n.category, n.file_name, n.is_forwardable, n.is_stale, n.is_hidden, n.stream, s.size "
      "FROM contents n LEFT JOIN streams s ON s.id = n.stream "
      "WHERE n.iteration = ?1 AND n.role = ?2 ORDER BY n.position");
  statement.Bind(iterationKey, role == ContentRole::Primary ? "primary" : "secondary");
  std::vector<ContentRow> rows;
  while (statement.Step()) {
    ContentRow row;
    row.oid = statement.Text(0);
    row.category = statement.Text(1);
    row.fileName = statement.Text(2);
    row.isForwardable = statement.Integer(3) != 0;
    row.isStale = statement.Integer(4) != 0;
    row.isHidden = statement.Integer(5) != 0;
    if (!statement.IsNull(6)) row.stream = statement.Integer(6);
    row.size = statement.Integer(7);
    rows.push_back(std::move(row));
  }
  return rows;
}

std::string FolderPath(Database& database, std::int64_t folderKey) {
  auto statement = database.Prepare(R"sql(
WITH RECURSIVE up(level, name, parent, context) AS (
  SELECT 0, name, parent, context FROM folders WHERE id = ?1
  UNION ALL
  SELECT up.level + 1, f.name, f.parent, f.context FROM folders f JOIN up ON f.id = up.parent)
SELECT CASE WHEN up.parent IS NULL THEN c.name ELSE up.name END
FROM up JOIN contexts c ON c.id = up.context ORDER BY up.level DESC)sql");
  statement.Bind(folderKey);
  std::string path;
  while (statement.Step()) path.append("/").append(statement.Text(0));
  return path;
}

std::string FolderLocation(Database& database, std::int64_t folderKey) {
  auto statement = database.Prepare("SELECT parent FROM folders WHERE id = ?1");
  const bool below = statement.Bind(folderKey).Step() && !statement.IsNull(0);
  return below ? FolderPath(database, statement.Integer(0)) : "/";
}

std::optional<std::int64_t> StreamSize(Database& database, std::int64_t stream) {
  auto statement = database.Prepare("SELECT size FROM streams WHERE id = ?1");
  if (!statement.Bind(stream).Step()) return std::nullopt;
  return statement.Integer(0);
}

}  // namespace vantry_sim
