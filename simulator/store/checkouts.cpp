#include "simulator/store/checkouts.h"

#include <vector>

#include "simulator/store/document_deletion.h"
#include "simulator/store/document_store.h"
#include "simulator/store/document_writer.h"
#include "simulator/store/folder_store.h"
#include "simulator/store/iteration_writer.h"
#include "simulator/store/user_store.h"

namespace vantry_sim {
namespace {

OrRefusal<DocumentRow> FindFor(Database& database, std::string_view user, const std::string& id) {
  if (auto document = FindDocument(database, id, user)) return std::move(*document);
  return ErrorResponse(404, "no-such-document", "no document " + id + " for this user");
}

/// The document, if it is something of this workspace alone.
OrRefusal<DocumentRow> FindWork(Database& database, const WorkspaceUser& user, const std::string& id) {
  auto document = FindFor(database, user.name, id);
  if (!document || document->workspaceKey == user.workspace.key) return document;
  return ErrorResponse(409, "not-checked-out", id + " is no working copy in " + user.workspace.oid);
}

Refusal RefuseCheckOut(const DocumentRow& document, const WorkspaceRow& workspace) {
  const auto refuse = [&](std::string_view code, const std::string& reason) {
    return ErrorResponse(409, code, document.oid + " " + reason);
  };
  if (document.workspaceKey) return refuse("in-workspace", "is in a workspace already");
  if (!document.checkoutUser.empty())
    return refuse("checked-out", "is checked out by " + document.checkoutUser);
  if (!document.isLatest) return refuse("not-latest", "has a newer version");
  if (document.contextKey != workspace.contextKey) {
    return refuse("other-context", "is in another context than the workspace");
  }
  return std::nullopt;
}

bool HoldsMaster(Database& database, std::int64_t workspace, std::int64_t master) {
  auto statement = database.Prepare(
      "SELECT 1 FROM workspace_documents d JOIN iterations i ON i.id = d.iteration "
      "WHERE d.workspace = ?1 AND i.master = ?2");
  return statement.Bind(workspace, master).Step();
}

void RemoveMaster(Database& database, std::int64_t workspace, std::int64_t master) {
  database
      .Prepare(
          "DELETE FROM workspace_documents WHERE workspace = ?1 "
          "AND iteration IN (SELECT id FROM iterations WHERE master = ?2)")
      .Bind(workspace, master)
      .Run();
}

void AddToWorkspace(Database& database, std::int64_t workspace, std::int64_t iteration) {
  database.Prepare("INSERT OR IGNORE INTO workspace_documents(workspace, iteration) VALUES(?1, ?2)")
      .Bind(workspace, iteration)
      .Run();
}

std::string OidOf(Database& database, std::int64_t iteration) {
  auto statement = database.Prepare("SELECT oid FROM iterations WHERE id = ?1");
  return statement.Bind(iteration).Step() ? statement.Text(0) : std::string();
}

bool HasStaleContent(Database& database, std::int64_t iteration) {
  auto statement =
      database.Prepare("SELECT 1 FROM contents WHERE iteration = ?1 AND role = 'secondary' AND is_stale = 1");
  return statement.Bind(iteration).Step();
}

/// The folder that a document is in, or will once it is checked in; 0 in a context without any.
std::int64_t HomeOf(Database& database, const DocumentRow& document) {
  auto statement = database.Prepare("SELECT ifnull(folder, target_folder) FROM iterations WHERE id = ?1");
  if (statement.Bind(document.key).Step() && !statement.IsNull(0)) return statement.Integer(0);
  const auto roots = RootFolders(database, document.contextKey);
  return roots.empty() ? 0 : roots.front().key;
}

}  // namespace

OrRefusal<std::string> CheckOut(Database& database, const WorkspaceUser& user, const std::string& id,
                                const Resolutions& resolutions) {
  const WorkspaceRow& workspace = user.workspace;
  auto document = FindFor(database, user.name, id);
  if (!document) return document.TakeRefusal();
  if (auto refusal = RefuseCheckOut(*document, workspace)) return std::move(*refusal);
  if (HoldsMaster(database, workspace.key, document->masterKey) &&
      !resolutions.Resolve(Conflict::AlreadyInWorkspace, document->masterOid)) {
    return Resolutions::Unresolved(Conflict::AlreadyInWorkspace, document->masterOid);
  }
  const std::int64_t working = InsertIteration(database, {.master = document->masterKey,
                                                          .context = document->contextKey,
                                                          .folder = document->folderKey,
                                                          .workspace = workspace.key,
                                                          .revision = document->revision,
                                                          .iteration = document->iteration,
                                                          .authAppVersion = document->authAppVersion,
                                                          .ndVersion = document->ndVersion});
  CopyParts(database, document->key, working);
  RemoveMaster(database, workspace.key, document->masterKey);
  AddToWorkspace(database, workspace.key, working);
  database.Prepare("INSERT INTO checkouts(base, working, workspace, user) VALUES(?1, ?2, ?3, ?4)")
      .Bind(document->key, working, workspace.key, workspace.ownerKey)
      .Run();
  return OidOf(database, working);
}

OrRefusal<std::string> CheckIn(Database& database, const WorkspaceUser& user, const std::string& id,
                               const CheckInOrder& order, const Resolutions& resolutions) {
  auto work = FindWork(database, user, id);
  if (!work) return work.TakeRefusal();
  if (HasStaleContent(database, work->key) && !resolutions.Resolve(Conflict::StaleContent, work->oid)) {
    return Resolutions::Unresolved(Conflict::StaleContent, work->oid);
  }
  const std::int64_t folder = HomeOf(database, *work);
  if (auto refusal = RefuseTakenName(database, folder, work->cadName, work->masterKey)) {
    return std::move(*refusal);
  }

  if (work->checkoutBaseKey) {
    database.Prepare("DELETE FROM checkouts WHERE working = ?1").Bind(work->key).Run();
    database.Prepare("UPDATE iterations SET is_latest = 0 WHERE id = ?1").Bind(*work->checkoutBaseKey).Run();
  }
  // A client that goes on with the working copy's id is to find out.
  const std::string oid = "D" + std::to_string(NextNumber(database));
  database
      .Prepare(
          "UPDATE iterations SET oid = ?2, workspace = NULL, folder = nullif(?3, 0), target_folder = NULL, "
          "iteration = iteration + ?4, is_latest = 1, comment = ?5, modified = server_time() "
          "WHERE id = ?1")
      .Bind(work->key, oid, folder, work->checkoutBaseKey ? 1 : 0, order.comment)
      .Run();
  if (order.removeFromWorkspace) RemoveMaster(database, user.workspace.key, work->masterKey);
  return oid;
}

OrRefusal<std::string> UndoCheckOut(Database& database, const WorkspaceUser& user, const std::string& id) {
  auto work = FindWork(database, user, id);
  if (!work) return work.TakeRefusal();
  if (!work->checkoutBaseKey) {
    return ErrorResponse(409, "not-checked-out",
                         id + " was never checked in, and there is nothing to go back to");
  }
  std::string baseOid = OidOf(database, *work->checkoutBaseKey);
  DeleteIteration(database, work->key, work->checkoutBaseKey);
  AddToWorkspace(database, user.workspace.key, *work->checkoutBaseKey);
  return baseOid;
}

void DeleteWorkspace(Database& database, const WorkspaceRow& workspace) {
  std::vector<std::pair<std::int64_t, std::optional<std::int64_t>>> work;
  {
    auto statement = database.Prepare(
        "SELECT i.id, k.base FROM iterations i LEFT JOIN checkouts k ON k.working = i.id WHERE i.workspace = "
        "?1");
    statement.Bind(workspace.key);
    while (statement.Step()) {
      work.emplace_back(statement.Integer(0),
                        statement.IsNull(1) ? std::nullopt : std::optional(statement.Integer(1)));
    }
  }
  for (const auto& [iteration, base] : work) DeleteIteration(database, iteration, base);
  database.Prepare("DELETE FROM workspace_documents WHERE workspace = ?1").Bind(workspace.key).Run();
  database.Prepare("DELETE FROM workspaces WHERE id = ?1").Bind(workspace.key).Run();
}

}  // namespace vantry_sim
