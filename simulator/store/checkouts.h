#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "simulator/store/conflict_resolution.h"
#include "simulator/store/database.h"
#include "simulator/store/workspace_store.h"
#include "simulator/wire/or_refusal.h"

namespace vantry_sim {

// Each of these is to be called in a transaction, which is to be rolled back after a refusal, and gives the
// id of the document that came of it.

/// Puts a working copy into the workspace and locks the document for its owner. The working copy has an id of
/// its own and the document's version.
OrRefusal<std::string> CheckOut(Database& database, const WorkspaceUser& user, const std::string& id,
                                const Resolutions& resolutions);

/// How a check-in is to be done.
struct CheckInOrder {
  bool removeFromWorkspace = false;
  std::string comment;
};

/// Makes a working copy the document's next iteration, or a new document its first one. It gets a new id; the
/// working copy's is gone.
OrRefusal<std::string> CheckIn(Database& database, const WorkspaceUser& user, const std::string& id,
                               const CheckInOrder& order, const Resolutions& resolutions);

/// Throws a working copy away. The document stays in the workspace without a checkout.
OrRefusal<std::string> UndoCheckOut(Database& database, const WorkspaceUser& user, const std::string& id);

/// Deletes a workspace with all that is only in it: working copies, whose checkouts end, and documents that
/// were never checked in.
void DeleteWorkspace(Database& database, const WorkspaceRow& workspace);

}  // namespace vantry_sim
