#include "simulator/admin/document_control.h"

#include "simulator/store/attribute_store.h"
#include "simulator/store/checkouts.h"
#include "simulator/store/document_deletion.h"
#include "simulator/store/document_writer.h"
#include "simulator/store/upload_store.h"
#include "simulator/store/workspace_store.h"

namespace vantry_sim {
namespace {

constexpr const char* workspaceName = "Made by the admin port";

/// The primary content of a new iteration: other bytes, or those of the version before.
Refusal AddPrimary(const ServiceContext& context, const DocumentRow& document, const DocumentChange& change,
                   DocumentInstruction& instruction) {
  const auto before = ContentsOf(context.database, document.key, ContentRole::Primary);
  if (!change.content) {
    for (const ContentRow& content : before) {
      if (!content.stream) continue;
      const std::string receipt = GiveReceipt(context.database, change.user, *content.stream);
      instruction.primary.push_back({content.category, content.fileName, false, *content.stream, receipt});
    }
    if (!instruction.primary.empty()) return std::nullopt;
    return ErrorResponse(409, "no-content", document.oid + " has no content, so give one");
  }
  const std::int64_t stream = context.contents.NextStream();
  context.contents.Write(stream, *change.content);
  context.database.Prepare("INSERT INTO streams(id, size) VALUES(?1, ?2)")
      .Bind(stream, static_cast<std::int64_t>(change.content->size()))
      .Run();
  const std::string receipt = GiveReceipt(context.database, change.user, stream);
  const std::string category = before.empty() ? document.subCategory : before.front().category;
  const std::string name = before.empty() ? "{$CAD_NAME}" : before.front().fileName;
  instruction.primary.push_back({category, name, false, stream, receipt});
  return std::nullopt;
}

/// Whoever has a document checked out, the working copy, and the workspace that it is in.
struct Work {
  DocumentRow copy;
  std::string user;
  WorkspaceRow workspace;
};

OrRefusal<Work> FindWork(const ServiceContext& context, const DocumentRow& document) {
  auto statement = context.database.Prepare(
      "SELECT i.oid, u.name, w.oid FROM iterations i JOIN workspaces w ON w.id = i.workspace "
      "JOIN users u ON u.id = w.owner LEFT JOIN checkouts k ON k.working = i.id WHERE i.id = ?1 OR k.base = "
      "?1");
  if (!statement.Bind(document.key).Step())
    return ErrorResponse(409, "not-checked-out", document.oid + " is not checked out");
  const std::string user = statement.Text(1);
  const auto workspace = FindWorkspace(context.database, statement.Text(2), user);
  const auto copy = FindDocument(context.database, statement.Text(0), user);
  if (!workspace || !copy) return ErrorResponse(500, "internal", "the working copy is lost");
  return Work{*copy, user, *workspace};
}

OrRefusal<WorkspaceRow> WorkspaceFor(const ServiceContext& context, const DocumentRow& document,
                                     const DocumentChange& change) {
  if (!change.workspace.empty()) {
    if (auto found = FindWorkspace(context.database, change.workspace, change.user)) return std::move(*found);
    return ErrorResponse(404, "no-such-workspace", change.user + " has no workspace " + change.workspace);
  }
  const auto all = WorkspacesOf(context.database, document.contextOid, change.user);
  if (!all.empty()) return all.front();
  return MakeWorkspace(context.database, document.contextKey, change.user, workspaceName, "");
}

}  // namespace

std::optional<DocumentRow> FindAnyDocument(Database& database, std::string_view oid) {
  auto statement = database.Prepare(
      "SELECT ifnull(u.name, '') FROM iterations i LEFT JOIN workspaces w ON w.id = i.workspace "
      "LEFT JOIN users u ON u.id = w.owner WHERE i.oid = ?1");
  if (!statement.Bind(oid).Step()) return std::nullopt;
  return FindDocument(database, oid, statement.Text(0));
}

OrRefusal<std::string> IterateAs(const ServiceContext& context, const DocumentRow& document,
                                 const DocumentChange& change) {
  DocumentInstruction instruction;
  instruction.id = document.oid;
  instruction.cadName = document.cadName;
  instruction.authAppVersion = document.authAppVersion;
  instruction.ndVersion = document.ndVersion;
  if (auto refusal = AddPrimary(context, document, change, instruction)) return std::move(*refusal);
  for (const ContentRow& content : ContentsOf(context.database, document.key, ContentRole::Secondary)) {
    if (content.isForwardable)
      instruction.secondary.push_back(
          {content.category, content.fileName, content.isHidden, std::nullopt, {}});
  }
  auto id =
      IterateDocument(context.database, change.user, document.contextOid, instruction, Resolutions::OfAll());
  if (!id) return id;
  const auto made = FindAnyDocument(context.database, *id);
  if (!made) return ErrorResponse(500, "internal", "the new iteration is lost");
  for (const auto& [name, value] : change.attributes) SetAttribute(context.database, made->key, name, value);
  context.database.Prepare("UPDATE iterations SET comment = ?2 WHERE id = ?1")
      .Bind(made->key, change.comment)
      .Run();
  return id;
}

OrRefusal<std::string> CheckOutAs(const ServiceContext& context, const DocumentRow& document,
                                  const DocumentChange& change) {
  auto workspace = WorkspaceFor(context, document, change);
  if (!workspace) return workspace.TakeRefusal();
  return CheckOut(context.database, {change.user, *workspace}, document.oid, Resolutions::OfAll());
}

OrRefusal<std::string> CheckInAs(const ServiceContext& context, const DocumentRow& document,
                                 const DocumentChange& change) {
  auto work = FindWork(context, document);
  if (!work) return work.TakeRefusal();
  return CheckIn(context.database, {work->user, work->workspace}, work->copy.oid, {false, change.comment},
                 Resolutions::OfAll());
}

OrRefusal<std::string> UndoAs(const ServiceContext& context, const DocumentRow& document,
                              const DocumentChange&) {
  auto work = FindWork(context, document);
  if (!work) return work.TakeRefusal();
  return UndoCheckOut(context.database, {work->user, work->workspace}, work->copy.oid);
}

OrRefusal<std::string> SetAttributes(const ServiceContext& context, const DocumentRow& document,
                                     const DocumentChange& change) {
  for (const auto& [name, value] : change.attributes)
    SetAttribute(context.database, document.key, name, value);
  Touch(context.database, document.key);
  return document.oid;
}

void Delete(const ServiceContext& context, const DocumentRow& document, bool versionAlone) {
  if (versionAlone) {
    DeleteVersion(context.database, document);
  } else {
    DeleteDocument(context.database, document.masterKey);
  }
}

}  // namespace vantry_sim
