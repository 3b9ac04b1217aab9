#include "browsing/expanded_folders.h"

#include <string_view>

#include "connection/json_members.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::string_view TextOf(const rapidjson::Value& object, std::string_view name) {
  const rapidjson::Value* text = FindString(object, name);
  return text != nullptr ? TextView(*text) : std::string_view();
}

std::string FolderResource(std::string_view id) {
  return std::string("Folders('").append(id).append("')");
}

// The first object of a name, depth-first through arrays.
const rapidjson::Value* FindNamed(const rapidjson::Value& value, const std::string& name) {
  if (value.IsObject()) {
    const rapidjson::Value* own = FindString(value, "Name");
    return own != nullptr && TextView(*own) == name ? &value : nullptr;
  }
  if (!value.IsArray()) return nullptr;
  for (const auto& element : value.GetArray()) {
    if (const rapidjson::Value* found = FindNamed(element, name)) return found;
  }
  return nullptr;
}

const rapidjson::Value* FindChild(const rapidjson::Value& object, const std::string& name) {
  const rapidjson::Value* folders = FindMember(object, "Folders");
  return folders != nullptr ? FindNamed(*folders, name) : nullptr;
}

// The result of the last element counts, even when it is empty and an earlier one matched: only a root named
// "Default" wins before the end. Taking the best instead would change which folder of a server with several
// roots is listed, so this must not be changed.
FolderWalk WalkElements(const rapidjson::Value& array, const FolderComponents& components) {
  FolderWalk walk;
  for (const auto& element : array.GetArray()) {
    walk = WalkFolderTree(element, components);
    if (walk.isDefault) break;
  }
  return walk;
}

}  // namespace

FolderWalk WalkFolderTree(const rapidjson::Value& value, const FolderComponents& components) {
  if (value.IsArray()) return WalkElements(value, components);
  if (!value.IsObject()) return {};
  std::string resource = FolderResource(TextOf(value, "ID"));
  if (!components.empty()) {
    const std::string below = BuildFolderResource(value, components);
    if (below.empty()) return {};
    resource += "/" + below;
  }
  return {std::move(resource), TextOf(value, "Name") == "Default"};
}

std::string BuildFolderResource(const rapidjson::Value& object, const FolderComponents& components) {
  if (components.empty()) return {};
  const rapidjson::Value* child = FindChild(object, components.first());
  const std::string_view id = child != nullptr ? TextOf(*child, "ID") : std::string_view();
  if (id.empty()) return {};
  const FolderComponents rest = components.rest();
  if (rest.empty()) return FolderResource(id);
  const std::string below = BuildFolderResource(*child, rest);
  return below.empty() ? std::string() : FolderResource(id) + "/" + below;
}

std::string FindFolderIdBelow(const rapidjson::Value& object, FolderComponents components) {
  if (components.empty()) return {};
  const rapidjson::Value* folder = &object;
  for (; !components.empty() && folder != nullptr; components = components.rest()) {
    folder = FindChild(*folder, components.first());
  }
  return folder != nullptr ? std::string(TextOf(*folder, "ID")) : std::string();
}

}  // namespace lxservices::cms_interface::vantry
