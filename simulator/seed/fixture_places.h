#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "simulator/seed/fixture.h"
#include "simulator/seed/fixture_ids.h"
#include "simulator/seed/fixture_object.h"

namespace vantry_sim {

/// A place that documents of a state file refer to.
struct FixturePlace {
  std::string id;
  std::string context;  ///< id
};

/// Reads the users, contexts, folders and workspaces of a state file, and finds them by the names that the
/// rest of the file has for them.
class FixturePlaces {
 public:
  FixturePlaces(Fixture& fixture, FixtureProblems& problems) : fixture_(fixture), problems_(problems) {}

  /// Reads what the root has of them.
  void Read(const FixtureObject& root);

  /// The id of a context, by its id or its name. Nothing, with a problem, for an unknown or an ambiguous one.
  std::optional<std::string> Context(const FixtureObject& from, std::string_view key);
  /// A folder, by its id or by its path: context, root, and so on, each after a "/".
  std::optional<FixturePlace> Folder(const FixtureObject& from, std::string_view key);
  /// A workspace, by its id or its name.
  std::optional<FixturePlace> Workspace(const FixtureObject& from, std::string_view key);

  /// The greatest number among the ids.
  [[nodiscard]] std::int64_t LastNumber() const;

 private:
  void ReadUsers(JsonValue list);
  void ReadContexts(JsonValue list);
  void ReadContext(JsonValue value);
  void ClaimFolders(JsonValue list);
  enum class FolderLevel { Root, Below };
  std::vector<FixtureFolder> ReadFolders(JsonValue list, const std::string& path, const std::string& context,
                                         FolderLevel level);
  void ReadWorkspaces(JsonValue list);

  /// What a name stands for; an empty place for a name that several have.
  using Names = std::map<std::string, FixturePlace>;
  void Name(Names& names, const std::string& name, const FixturePlace& place);
  std::optional<FixturePlace> Find(const Names& names, const FixtureObject& from, std::string_view key,
                                   const char* kind);

  Fixture& fixture_;
  FixtureProblems& problems_;
  FixtureIds contextIds_{101};
  FixtureIds folderIds_{201};
  FixtureIds workspaceIds_{301};
  Names contexts_;
  Names folders_;
  Names workspaces_;
};

}  // namespace vantry_sim
