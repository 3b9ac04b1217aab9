#pragma once

#include <rapidjson/document.h>

#include <list>
#include <string>

/// Walks over an expanded answer, a tree of objects with "ID", "Name" and an array "Folders" of the same
/// shape. Pure functions. They recurse over JSON that was parsed with a limit on its depth, and never over
/// the path alone.
namespace lxservices::cms_interface::vantry {

/// The components of a folder path that are still to be found.
struct FolderComponents {
  std::list<std::string>::const_iterator begin;
  std::list<std::string>::const_iterator end;

  [[nodiscard]] bool empty() const { return begin == end; }
  [[nodiscard]] const std::string& first() const { return *begin; }
  [[nodiscard]] FolderComponents rest() const { return {std::next(begin), end}; }
};

/// What a walk found: a resource text, and whether it begins at a root folder named "Default".
struct FolderWalk {
  std::string resource;
  bool isDefault = false;
};

/// Looks a folder path up below one root folder or, for an array, below each. The first level is the root
/// folder itself; the first component is looked for under it.
[[nodiscard]] FolderWalk WalkFolderTree(const rapidjson::Value& value, const FolderComponents& components);

/// The resource of the folder that a path leads to below an object, the object itself left out; empty when
/// there is no such folder, when a folder on the way has no id, and for an empty path.
[[nodiscard]] std::string BuildFolderResource(const rapidjson::Value& object,
                                              const FolderComponents& components);

/// The id of the folder that a path leads to below an object; empty when there is no such folder and for an
/// empty path. Only the last folder needs an id.
[[nodiscard]] std::string FindFolderIdBelow(const rapidjson::Value& object, FolderComponents components);

}  // namespace lxservices::cms_interface::vantry
