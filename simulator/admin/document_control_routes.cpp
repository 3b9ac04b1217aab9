#include <algorithm>

#include "simulator/admin/admin_api.h"
#include "simulator/admin/document_control.h"
#include "simulator/seed/fixture_export.h"
#include "simulator/seed/fixture_writer.h"
#include "simulator/wire/authentication.h"
#include "simulator/wire/json_members.h"

namespace vantry_sim {
namespace {

constexpr std::int64_t mostListed = 10'000;

void WriteListed(JsonText& json, const Statement& row) {
  json.StartObject().Member("id", row.Text(0)).Member("cadName", row.Text(1)).Member("name", row.Text(2));
  json.Member("number", row.Text(3)).Member("version", row.Text(4)).Member("context", row.Text(5));
  json.Member("folder", row.Text(6)).Member("checkedOutBy", row.Text(7)).EndObject();
}

/// The latest version of every document, and what was never checked in.
Response List(const ServiceContext& context, const Request& request) {
  auto statement = context.database.Prepare(
      "SELECT i.oid, m.cad_name, m.name, m.number, i.revision || '.' || i.iteration, c.name, f.name, u.name "
      "FROM iterations i JOIN masters m ON m.id = i.master JOIN contexts c ON c.id = i.context "
      "LEFT JOIN folders f ON f.id = i.folder LEFT JOIN checkouts k ON k.base = i.id LEFT JOIN users u ON "
      "u.id = k.user "
      "WHERE i.is_latest = 1 AND (?1 = '' OR m.cad_name = ?1) AND (?2 = '' OR m.number = ?2) ORDER BY i.id "
      "LIMIT ?3");
  statement.Bind(request.Query("cadName").value_or(""), request.Query("number").value_or(""), mostListed);
  return AdminAnswer([&](JsonText& json) {
    json.StartObject().Key("documents").StartArray();
    while (statement.Step()) WriteListed(json, statement);
    json.EndArray().EndObject();
  });
}

Response NoSuchDocument(const std::string& id) {
  return ErrorResponse(404, "no-such-document", "no document has a version " + id);
}

/// A document as a state file has it.
Response One(const ServiceContext& context, const std::string& id) {
  const Fixture fixture = ExportFixture(context.database, context.contents);
  for (const FixtureDocument& document : fixture.documents) {
    const bool hasIt = std::any_of(document.versions.begin(), document.versions.end(),
                                   [&](const FixtureVersion& version) { return version.id == id; });
    if (!hasIt && (!document.checkout || document.checkout->id != id)) continue;
    const auto out = MakeJsonOutput();
    WriteFixtureDocument(*out, fixture, document, {FixtureBytesForm::Kind::References});
    Response response;
    response.body = out->Take();
    return response;
  }
  return NoSuchDocument(id);
}

/// Does something to the document of the path, whole or not at all, and answers with what came of it.
/// @param change gives the id of what came of it, empty when the document is gone
Response Change(
    Simulator& simulator, const Request& request,
    const std::function<OrRefusal<std::string>(const ServiceContext&, const DocumentRow&)>& change) {
  return simulator.Exclusively([&](const ServiceContext& context) {
    const auto document = FindAnyDocument(context.database, request.Path("id"));
    if (!document) return NoSuchDocument(request.Path("id"));
    Transaction transaction(context.database);
    auto id = change(context, *document);
    if (!id) return id.TakeRefusal();
    transaction.Commit();
    return id->empty() ? AdminDone() : One(context, *id);
  });
}

/// What a body says of a change. @return a refusal that says what is wrong with it
OrRefusal<DocumentChange> ReadChange(const Request& request, const std::vector<std::string_view>& members) {
  auto body = ReadAdminBody(request, members);
  if (!body) return body.TakeRefusal();
  DocumentChange change;
  std::string problem;
  change.user = openServerUser;
  JsonMembers reader(body->Root(), problem);
  reader.Text("user", change.user).Text("comment", change.comment).Text("workspace", change.workspace);
  if (reader.Has("content")) reader.Text("content", change.content.emplace());
  if (reader.Has("contentBase64")) {
    std::string text;
    reader.Text("contentBase64", text);
    change.content = DecodeBase64(text);
    if (!change.content) problem = "contentBase64 is no base64";
  }
  if (const JsonValue attributes = reader.Object("attributes"); !attributes.IsMissing()) {
    for (const JsonValue attribute : attributes) {
      if (!attribute.IsText()) problem = std::string(attribute.Name()) + " is no text";
      change.attributes.emplace_back(attribute.Name(), attribute.Text());
    }
  }
  if (problem.empty() && change.user.empty()) problem = "user is empty";
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  return change;
}

using Operation = OrRefusal<std::string> (*)(const ServiceContext&, const DocumentRow&,
                                             const DocumentChange&);

/// One way to change a document.
struct ChangeRoute {
  const char* word;                       ///< the end of its address
  std::vector<std::string_view> members;  ///< which its body may have
  Operation operation;
  const char* about;
};

void AddChange(Router& router, Simulator& simulator, const ChangeRoute& route) {
  router.Add(
      "POST", std::string("documents/{id}/") + route.word,
      [&simulator, members = route.members, operation = route.operation](const Request& request) {
        auto wish = ReadChange(request, members);
        if (!wish) return wish.TakeRefusal();
        return Change(simulator, request, [&](const ServiceContext& context, const DocumentRow& document) {
          return operation(context, document, *wish);
        });
      },
      route.about);
}

}  // namespace

void AddDocumentControlRoutes(Router& router, Simulator& simulator) {
  router.Add(
      "GET", "documents",
      [&simulator](const Request& request) {
        return simulator.Exclusively([&](const ServiceContext& context) { return List(context, request); });
      },
      "the latest version of every document");
  router.Add(
      "GET", "documents/{id}",
      [&simulator](const Request& request) {
        return simulator.Exclusively(
            [&](const ServiceContext& context) { return One(context, request.Path("id")); });
      },
      "one document with its versions");
  AddChange(router, simulator,
            {"iterate",
             {"user", "content", "contentBase64", "attributes", "comment"},
             IterateAs,
             "a new iteration by somebody"});
  AddChange(router, simulator, {"checkout", {"user", "workspace"}, CheckOutAs, "a checkout by somebody"});
  AddChange(router, simulator, {"checkin", {"comment"}, CheckInAs, "a check-in by whoever has it"});
  AddChange(router, simulator, {"undo", {}, UndoAs, "the end of a checkout, whoever has it"});
  AddChange(router, simulator,
            {"attributes", {"attributes"}, SetAttributes, "attributes of a version, in its place"});
  router.Add(
      "DELETE", "documents/{id}",
      [&simulator](const Request& request) {
        const std::string what = request.Query("what").value_or("document");
        if (what != "document" && what != "version")
          return ErrorResponse(400, "bad-parameter", "what is document or version");
        return Change(simulator, request, [&](const ServiceContext& context, const DocumentRow& document) {
          Delete(context, document, what == "version");
          return std::string();
        });
      },
      "a document or one version is gone");
}

}  // namespace vantry_sim
