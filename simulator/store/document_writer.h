#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "simulator/store/conflict_resolution.h"
#include "simulator/store/database.h"
#include "simulator/store/document_instruction.h"
#include "simulator/store/workspace_store.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

// Each of these is to be called in a transaction, which is to be rolled back after a refusal, and gives the
// id of the document that came of it.

/// Makes a new document in a folder of the context.
Refusal CreateDocument(Database& database, std::string_view user, std::string_view contextOid,
                       const DocumentInstruction& instruction, std::string& oid);

/// Makes a new document in a workspace; the folder gets it at the first check-in.
Refusal CreateDocumentInWorkspace(Database& database, std::string_view user, const WorkspaceRow& workspace,
                                  const DocumentInstruction& instruction, std::string& oid);

/// Makes the next iteration of a document that nobody has checked out.
Refusal IterateDocument(Database& database, std::string_view user, std::string_view contextOid,
                        const DocumentInstruction& instruction, const Resolutions& resolutions,
                        std::string& oid);

/// Replaces what a working copy holds. Its id stays, and its version does until it is checked in.
Refusal StoreDocument(Database& database, std::string_view user, const WorkspaceRow& workspace,
                      const DocumentInstruction& instruction, const Resolutions& resolutions,
                      std::string& oid);

/// Refuses a name that another document has in the folder.
Refusal RefuseTakenName(Database& database, std::int64_t folder, std::string_view cadName,
                        std::int64_t master);

}  // namespace vantry_sim
