#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/store/database.h"

namespace vantry_sim {

/// A user's area in one context.
struct WorkspaceRow {
  std::int64_t key = 0;
  std::string oid;
  std::string name;
  std::string description;
  std::string contextOid;
  std::int64_t contextKey = 0;
  std::int64_t ownerKey = 0;
};

/// Somebody, and the workspace of theirs that they work in.
struct WorkspaceUser {
  std::string_view name;
  const WorkspaceRow& workspace;
};

/// The user's workspaces in a context, in the order they were made.
std::vector<WorkspaceRow> WorkspacesOf(Database& database, std::string_view contextOid,
                                       std::string_view user);

/// Makes a workspace. @param context row id
WorkspaceRow MakeWorkspace(Database& database, std::int64_t context, std::string_view user,
                           std::string_view name, std::string_view description);

/// The user's workspace with this id; nothing for an unknown one or somebody else's.
std::optional<WorkspaceRow> FindWorkspace(Database& database, std::string_view oid, std::string_view user);

}  // namespace vantry_sim
