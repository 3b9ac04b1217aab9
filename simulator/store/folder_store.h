#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/store/database.h"

namespace vantry_sim {

/// A folder, or a root of a context.
struct FolderRow {
  std::int64_t key = 0;
  std::string oid;
  std::string name;
};

/// The row id of a context; nothing for an unknown id.
/// @param kind that it must be of; empty: any
std::optional<std::int64_t> ContextKey(Database& database, std::string_view oid, std::string_view kind = {});

/// The roots of a context, the one called `Default` first.
std::vector<FolderRow> RootFolders(Database& database, std::int64_t context);

/// The folders right in a folder, by name.
std::vector<FolderRow> SubFolders(Database& database, std::int64_t folder);

/// The folder at a path that leaves out the name of the root, such as `Drivetrain/Chains`. The root called
/// `Default` is looked through first. An empty path is that root. Where no folder has a component as its name
/// it is taken with its escapes of the ten forbidden characters undone, since that is how clients show such
/// names.
std::optional<FolderRow> FindFolderByPath(Database& database, std::int64_t context, std::string_view path);

/// The folder that a chain of ids leads to, each the parent of the next and the first a root of the context.
std::optional<std::int64_t> FindFolderByIds(Database& database, std::int64_t context,
                                            const std::vector<std::string>& oids);

/// The row id of a folder, and of its context; nothing for an unknown id.
struct FolderPlace {
  std::int64_t folder = 0;
  std::int64_t context = 0;
};
std::optional<FolderPlace> FindFolder(Database& database, std::string_view oid);

}  // namespace vantry_sim
