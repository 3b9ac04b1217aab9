#include "simulator/store/document_writer.h"

#include <cstdio>

#include "simulator/store/document_store.h"
#include "simulator/store/folder_store.h"
#include "simulator/store/iteration_writer.h"
#include "simulator/store/user_store.h"

namespace vantry_sim {
namespace {

std::string OidOf(Database& database, std::int64_t iteration) {
  auto statement = database.Prepare("SELECT oid FROM iterations WHERE id = ?1");
  return statement.Bind(iteration).Step() ? statement.Text(0) : std::string();
}

/// The folder that an instruction names, or the root of the context when it names none.
Refusal TargetFolder(Database& database, std::int64_t context, const DocumentInstruction& instruction,
                     std::int64_t& folder) {
  if (!instruction.targetFolder.empty()) {
    const auto place = FindFolder(database, instruction.targetFolder);
    if (!place || place->context != context) {
      return ErrorResponse(404, "no-such-folder", "the context has no folder " + instruction.targetFolder);
    }
    folder = place->folder;
    return std::nullopt;
  }
  const auto roots = RootFolders(database, context);
  if (roots.empty()) return ErrorResponse(409, "no-folder", "the context has no folder at all");
  folder = roots.front().key;
  return std::nullopt;
}

std::int64_t InsertMaster(Database& database, const DocumentInstruction& instruction) {
  const std::int64_t number = NextNumber(database);
  char digits[24];
  std::snprintf(digits, sizeof digits, "%010lld", static_cast<long long>(number));
  database
      .Prepare(
          "INSERT INTO masters(oid, service, name, number, category, sub_category, cad_name, "
          "authoring_application, "
          "type_id) VALUES(?1, 'dynamic', ?2, ?3, ?4, ?5, ?2, ?6, ?7)")
      .Bind("M" + std::to_string(number), instruction.cadName, digits, instruction.category,
            instruction.subCategory, instruction.application, instruction.typeId)
      .Run();
  return database.LastRowId();
}

Refusal RefuseForCreation(const DocumentInstruction& instruction) {
  if (instruction.id.empty()) return std::nullopt;
  return ErrorResponse(400, "bad-body", "a document that is to be made has no id yet");
}

Response NoSuchDocument(const std::string& id) {
  return ErrorResponse(404, "no-such-document", "no document " + id + " for this user");
}

/// Whether another document was made of some version of this one.
bool IsUsed(Database& database, std::int64_t master) {
  auto statement = database.Prepare(
      "SELECT 1 FROM iterations s JOIN dependencies d ON d.source = s.id JOIN iterations x ON x.id = "
      "d.iteration "
      "WHERE s.master = ?1 AND x.master <> ?1 AND (x.is_latest = 1 OR x.workspace IS NOT NULL)");
  return statement.Bind(master).Step();
}

Refusal RefuseUnresolvedUse(Database& database, const DocumentRow& document, const Resolutions& resolutions) {
  if (resolutions.Resolve(Conflict::OtherVersionUsed, document.oid) ||
      !IsUsed(database, document.masterKey)) {
    return std::nullopt;
  }
  return Resolutions::Unresolved(Conflict::OtherVersionUsed, document.oid);
}

Refusal RefuseForIteration(const DocumentRow& document, const DocumentInstruction& instruction) {
  if (instruction.cadName != document.cadName) {
    return ErrorResponse(409, "other-name", "the document is called " + document.cadName + " and stays so");
  }
  if (!document.checkoutUser.empty() && !document.workspaceKey) {
    return ErrorResponse(409, "checked-out", document.oid + " is checked out by " + document.checkoutUser);
  }
  return std::nullopt;
}

}  // namespace

Refusal RefuseTakenName(Database& database, std::int64_t folder, std::string_view cadName,
                        std::int64_t master) {
  auto statement = database.Prepare(
      "SELECT i.oid FROM masters m JOIN iterations i ON i.master = m.id "
      "WHERE m.cad_name = ?1 AND m.id <> ?2 AND i.is_latest = 1 AND i.workspace IS NULL AND +i.folder = ?3");
  if (!statement.Bind(cadName, master, folder).Step()) return std::nullopt;
  return ErrorResponse(409, "name-taken",
                       "the folder has another " + std::string(cadName) + ": " + statement.Text(0));
}

OrRefusal<std::string> CreateDocument(Database& database, std::string_view user, std::string_view contextOid,
                                      const DocumentInstruction& instruction) {
  if (auto refusal = RefuseForCreation(instruction)) return std::move(*refusal);
  const auto context = ContextKey(database, contextOid);
  if (!context) return ErrorResponse(404, "no-such-context", "no context with this id");
  std::int64_t folder = 0;
  if (auto refusal = TargetFolder(database, *context, instruction, folder)) return std::move(*refusal);
  if (auto refusal = RefuseTakenName(database, folder, instruction.cadName, 0)) return std::move(*refusal);
  const std::int64_t iteration = InsertIteration(database, {.master = InsertMaster(database, instruction),
                                                            .context = *context,
                                                            .folder = folder,
                                                            .isLatest = true,
                                                            .authAppVersion = instruction.authAppVersion,
                                                            .ndVersion = instruction.ndVersion});
  if (auto refusal = WriteParts(database, user, instruction, iteration, std::nullopt))
    return std::move(*refusal);
  return OidOf(database, iteration);
}

OrRefusal<std::string> CreateDocumentInWorkspace(Database& database, const WorkspaceUser& user,
                                                 const DocumentInstruction& instruction) {
  const WorkspaceRow& workspace = user.workspace;
  if (auto refusal = RefuseForCreation(instruction)) return std::move(*refusal);
  std::int64_t folder = 0;
  if (auto refusal = TargetFolder(database, workspace.contextKey, instruction, folder))
    return std::move(*refusal);
  if (auto refusal = RefuseTakenName(database, folder, instruction.cadName, 0)) return std::move(*refusal);
  const std::int64_t iteration = InsertIteration(database, {.master = InsertMaster(database, instruction),
                                                            .context = workspace.contextKey,
                                                            .workspace = workspace.key,
                                                            .targetFolder = folder,
                                                            .isLatest = true,
                                                            .authAppVersion = instruction.authAppVersion,
                                                            .ndVersion = instruction.ndVersion});
  database.Prepare("INSERT INTO workspace_documents(workspace, iteration) VALUES(?1, ?2)")
      .Bind(workspace.key, iteration)
      .Run();
  if (auto refusal = WriteParts(database, user.name, instruction, iteration, std::nullopt))
    return std::move(*refusal);
  return OidOf(database, iteration);
}

OrRefusal<std::string> IterateDocument(Database& database, std::string_view user, std::string_view contextOid,
                                       const DocumentInstruction& instruction,
                                       const Resolutions& resolutions) {
  const auto document = FindDocument(database, instruction.id, user);
  if (!document) return NoSuchDocument(instruction.id);
  if (document->contextOid != contextOid) {
    return ErrorResponse(409, "other-context", instruction.id + " is in " + document->contextOid);
  }
  if (document->workspaceKey) {
    return ErrorResponse(409, "in-workspace",
                         instruction.id + " is stored in its workspace and not iterated");
  }
  if (!document->isLatest) return ErrorResponse(409, "not-latest", instruction.id + " has a newer version");
  if (auto refusal = RefuseForIteration(*document, instruction)) return std::move(*refusal);
  if (auto refusal = RefuseUnresolvedUse(database, *document, resolutions)) return std::move(*refusal);

  database.Prepare("UPDATE iterations SET is_latest = 0 WHERE id = ?1").Bind(document->key).Run();
  const std::int64_t iteration = InsertIteration(database, {.master = document->masterKey,
                                                            .context = document->contextKey,
                                                            .folder = document->folderKey,
                                                            .revision = document->revision,
                                                            .iteration = document->iteration + 1,
                                                            .isLatest = true,
                                                            .authAppVersion = instruction.authAppVersion,
                                                            .ndVersion = instruction.ndVersion});
  if (auto refusal = WriteParts(database, user, instruction, iteration, document->key))
    return std::move(*refusal);
  return OidOf(database, iteration);
}

OrRefusal<std::string> StoreDocument(Database& database, const WorkspaceUser& user,
                                     const DocumentInstruction& instruction, const Resolutions& resolutions) {
  const auto document = FindDocument(database, instruction.id, user.name);
  if (!document) return NoSuchDocument(instruction.id);
  if (document->workspaceKey != user.workspace.key) {
    return ErrorResponse(409, "not-checked-out",
                         instruction.id + " is no working copy in " + user.workspace.oid);
  }
  if (auto refusal = RefuseForIteration(*document, instruction)) return std::move(*refusal);
  if (auto refusal = RefuseUnresolvedUse(database, *document, resolutions)) return std::move(*refusal);
  database
      .Prepare(
          "UPDATE iterations SET auth_app_version = ?2, nd_version = ?3, "
          "modified = server_time() WHERE id = ?1")
      .Bind(document->key, instruction.authAppVersion, instruction.ndVersion)
      .Run();
  if (auto refusal = WriteParts(database, user.name, instruction, document->key, document->key))
    return std::move(*refusal);
  return document->oid;
}

}  // namespace vantry_sim
