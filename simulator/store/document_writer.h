#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "simulator/store/conflict_resolution.h"
#include "simulator/store/database.h"
#include "simulator/store/document_instruction.h"
#include "simulator/store/workspace_store.h"
#include "simulator/wire/or_refusal.h"

namespace vantry_sim {

// Each of these is to be called in a transaction, which is to be rolled back after a refusal, and gives the
// id of the document that came of it.

/// Makes a new document in a folder of the context.
OrRefusal<std::string> CreateDocument(Database& database, std::string_view user, std::string_view contextOid,
                                      const DocumentInstruction& instruction);

/// Makes a new document in a workspace; the folder gets it at the first check-in.
OrRefusal<std::string> CreateDocumentInWorkspace(Database& database, const WorkspaceUser& user,
                                                 const DocumentInstruction& instruction);

/// Makes the next iteration of a document that nobody has checked out.
OrRefusal<std::string> IterateDocument(Database& database, std::string_view user, std::string_view contextOid,
                                       const DocumentInstruction& instruction,
                                       const Resolutions& resolutions);

/// Replaces what a working copy holds. Its id stays, and its version does until it is checked in.
OrRefusal<std::string> StoreDocument(Database& database, const WorkspaceUser& user,
                                     const DocumentInstruction& instruction, const Resolutions& resolutions);

/// Refuses a name that another document has in the folder.
Refusal RefuseTakenName(Database& database, std::int64_t folder, std::string_view cadName,
                        std::int64_t master);

}  // namespace vantry_sim
