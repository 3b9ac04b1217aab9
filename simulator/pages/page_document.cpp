#include "simulator/pages/page_document.h"

#include "simulator/store/attribute_store.h"
#include "simulator/wire/json_members.h"
#include "simulator/wire/uri.h"

namespace vantry_sim {
namespace {

constexpr std::string_view entry =
    "SELECT i.oid, m.cad_name, m.number, i.revision || '.' || i.iteration, ifnull(u.name, '') FROM "
    "iterations i "
    "JOIN masters m ON m.id = i.master LEFT JOIN checkouts k ON k.base = i.id OR k.working = i.id "
    "LEFT JOIN users u ON u.id = k.user ";

void WriteEntries(JsonText& json, Statement& statement) {
  while (statement.Step()) {
    json.StartObject().Member("id", statement.Text(0)).Member("cadName", statement.Text(1));
    json.Member("number", statement.Text(2)).Member("version", statement.Text(3));
    json.Member("checkedOutBy", statement.Text(4)).EndObject();
  }
}

/// Why a document cannot be edited; empty when it can.
std::string ReasonAgainstEditing(const DocumentRow& document) {
  if (document.workspaceKey) return {};
  if (!document.checkoutUser.empty()) return "it is checked out by " + document.checkoutUser;
  if (!document.isLatest) return "there is a newer version";
  return {};
}

void WriteContents(JsonText& json, Database& database, const DocumentRow& document,
                   std::string_view baseUrl) {
  json.Key("contents").StartArray();
  for (const ContentRole role : {ContentRole::Primary, ContentRole::Secondary}) {
    for (const ContentRow& content : ContentsOf(database, document.key, role)) {
      std::string name = content.fileName;
      constexpr std::string_view place = "{$CAD_NAME}";
      if (const auto at = name.find(place); at != std::string::npos)
        name.replace(at, place.size(), document.cadName);
      json.StartObject().Member("fileName", name).Member("category", content.category);
      json.Member("size", content.size)
          .Member("role", role == ContentRole::Primary ? "primary" : "secondary");
      json.Member("url", content.stream ? std::string(baseUrl) + "/servlet/rest/v1/content/streams/" +
                                              std::to_string(*content.stream) + "/" +
                                              PercentEncode(name.empty() ? "content" : name)
                                        : std::string());
      json.EndObject();
    }
  }
  json.EndArray();
}

void WriteAttributes(JsonText& json, Database& database, std::int64_t iteration) {
  auto statement =
      database.Prepare("SELECT parameter_name, value FROM attributes WHERE iteration = ?1 ORDER BY position");
  statement.Bind(iteration);
  json.Key("attributes").StartArray();
  while (statement.Step())
    json.StartObject().Member("name", statement.Text(0)).Member("value", statement.Text(1)).EndObject();
  json.EndArray();
}

void WriteVersions(JsonText& json, Database& database, std::int64_t master) {
  auto statement = database.Prepare(
      "SELECT oid, revision || '.' || iteration, modified, comment FROM iterations "
      "WHERE master = ?1 AND workspace IS NULL ORDER BY version_key DESC");
  statement.Bind(master);
  json.Key("versions").StartArray();
  while (statement.Step()) {
    json.StartObject().Member("id", statement.Text(0)).Member("version", statement.Text(1));
    json.Member("modified", statement.Text(2)).Member("comment", statement.Text(3)).EndObject();
  }
  json.EndArray();
}

std::string ModifiedOf(Database& database, std::int64_t iteration) {
  auto statement = database.Prepare("SELECT modified FROM iterations WHERE id = ?1");
  return statement.Bind(iteration).Step() ? statement.Text(0) : std::string();
}

}  // namespace

void WriteFolderDocuments(JsonText& json, Database& database, std::int64_t folder) {
  auto statement = database.Prepare(
      std::string(entry) +
      "WHERE i.folder = ?1 AND i.is_latest = 1 AND i.workspace IS NULL ORDER BY m.cad_name, i.id LIMIT 5000");
  WriteEntries(json, statement.Bind(folder));
}

void WritePageWorkspaces(JsonText& json, Database& database, std::string_view user) {
  auto statement = database.Prepare(
      "SELECT w.id, w.oid, w.name, w.description, c.name FROM workspaces w JOIN users u ON u.id = w.owner "
      "JOIN contexts c ON c.id = w.context WHERE u.name = ?1 ORDER BY w.id");
  statement.Bind(user);
  while (statement.Step()) {
    json.StartObject().Member("id", statement.Text(1)).Member("name", statement.Text(2));
    json.Member("description", statement.Text(3)).Member("context", statement.Text(4));
    auto documents = database.Prepare(
        std::string(entry) +
        "WHERE i.id IN (SELECT iteration FROM workspace_documents WHERE workspace = ?1) ORDER BY i.id");
    json.Key("documents").StartArray();
    WriteEntries(json, documents.Bind(statement.Integer(0)));
    json.EndArray().EndObject();
  }
}

void WritePageDocument(JsonText& json, Database& database, const DocumentRow& document, std::string_view user,
                       std::string_view baseUrl) {
  const std::string reason = ReasonAgainstEditing(WorkingCopyOr(database, document, user).value_or(document));
  json.StartObject().Member("id", document.oid).Member("cadName", document.cadName);
  json.Member("name", document.masterName).Member("number", document.number);
  json.Member("version", document.revision + "." + std::to_string(document.iteration));
  json.Member("context", document.contextName);
  json.Member("location", document.folderKey ? FolderPath(database, *document.folderKey) : std::string());
  json.Member("modified", ModifiedOf(database, document.key)).Member("checkedOutBy", document.checkoutUser);
  json.Member("editable", reason.empty()).Member("reason", reason);
  WriteAttributes(json, database, document.key);
  WriteContents(json, database, document, baseUrl);
  WriteVersions(json, database, document.masterKey);
  json.EndObject();
}

std::optional<DocumentRow> WorkingCopyOr(Database& database, const DocumentRow& document,
                                         std::string_view user) {
  if (document.workspaceKey || document.checkoutUser != user) return document;
  auto statement = database.Prepare(
      "SELECT i.oid FROM checkouts k JOIN iterations i ON i.id = k.working WHERE k.base = ?1");
  return statement.Bind(document.key).Step() ? FindDocument(database, statement.Text(0), user) : document;
}

Refusal EditPageDocument(Database& database, const DocumentRow& document, JsonValue body) {
  if (const std::string reason = ReasonAgainstEditing(document); !reason.empty())
    return ErrorResponse(409, document.checkoutUser.empty() ? "not-latest" : "checked-out", reason);
  std::string problem, name = document.masterName, number = document.number;
  JsonMembers members(body, problem);
  members.Text("name", name).Text("number", number);
  const JsonValue attributes = members.Object("attributes");
  for (const JsonValue attribute : attributes) {
    if (!attribute.IsText() || attribute.Name().empty()) problem = "an attribute is a name and a text";
  }
  if (problem.empty() && (name.empty() || number.empty())) problem = "name and number must not be empty";
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  database.Prepare("UPDATE masters SET name = ?2, number = ?3 WHERE id = ?1")
      .Bind(document.masterKey, name, number)
      .Run();
  for (const JsonValue attribute : attributes)
    SetAttribute(database, document.key, attribute.Name(), attribute.Text());
  Touch(database, document.key);
  return std::nullopt;
}

}  // namespace vantry_sim
