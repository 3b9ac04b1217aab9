#include "browsing/vfs_tree.h"

#include "platform/environment.h"
#include "platform/localizer.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr VfsNameId rootNames[] = {VfsNameId::Products, VfsNameId::Libraries, VfsNameId::Projects,
                                   VfsNameId::Sites};

const char* MessageKeyOf(VfsNameId id) {
  switch (id) {
    case VfsNameId::Products:
      return "VantryVFSPathProducts";
    case VfsNameId::Libraries:
      return "VantryVFSPathLibraries";
    case VfsNameId::Projects:
      return "VantryVFSPathProjects";
    case VfsNameId::Sites:
      return "VantryVFSPathSites";
    case VfsNameId::Folders:
      return "VantryVFSPathFolders";
    case VfsNameId::Workspaces:
      return "VantryVFSPathWorkspaces";
  }
  return nullptr;
}

// Takes the text before the next "/" off the path. False, and nothing happens, when no "/" follows.
bool TakeLevel(std::string_view& path, std::string& level) {
  const auto slash = path.find('/');
  if (slash == std::string_view::npos) return false;
  level = path.substr(0, slash);
  path.remove_prefix(slash + 1);
  return true;
}

// Sets what both forms of a path have in common, and gives what comes after the section.
std::string_view SplitUpperLevels(std::string_view path, ParsedVfsPath& parsed) {
  if (!TakeLevel(path, parsed.root)) return {};
  parsed.kind = KindOfRoot(parsed.root);
  if (!TakeLevel(path, parsed.context)) return {};
  if (TakeLevel(path, parsed.section)) return path;
  parsed.section = path;
  return {};
}

}  // namespace

std::string LocalisedVfsName(VfsNameId id) {
  const char* key = MessageKeyOf(id);
  if (key == nullptr) return {};
  du::Localizer localizer("cmsinterface:cmsinterfaceStrings");
  return localizer.LocalizeMessage(key, du::Localizer::ActionOnFailure::GiveKey);
}

bool IsVfsName(std::string_view component, VfsNameId id) {
  return component == LocalisedVfsName(id);
}

ContextKind KindOfRoot(std::string_view root) {
  if (root.empty()) return ContextKind::None;
  for (const VfsNameId name : rootNames) {
    if (IsVfsName(root, name)) return static_cast<ContextKind>(name);
  }
  return ContextKind::None;
}

std::string RootOfKind(ContextKind kind) {
  const bool hasRoot = kind >= ContextKind::Product && kind <= ContextKind::Site;
  return hasRoot ? LocalisedVfsName(static_cast<VfsNameId>(kind)) : std::string();
}

ParsedVfsPath SplitDirectoryPath(std::string_view path) {
  ParsedVfsPath parsed;
  parsed.folderPath = SplitUpperLevels(path, parsed);
  return parsed;
}

ParsedVfsPath SplitFilePath(std::string_view path) {
  ParsedVfsPath parsed;
  std::string_view leaf = SplitUpperLevels(path, parsed);
  if (const auto slash = leaf.rfind('/'); slash != std::string_view::npos) {
    parsed.folderPath = leaf.substr(0, slash);
    leaf.remove_prefix(slash + 1);
  }
  const auto bar = leaf.rfind('|');
  parsed.leaf = leaf.substr(0, bar);
  if (bar != std::string_view::npos) parsed.version = leaf.substr(bar + 1);
  return parsed;
}

std::string WorkspaceNameOf(const ParsedVfsPath& directory) {
  std::string name = directory.folderPath;
  if (!name.empty() && name.back() == '/') name.pop_back();
  return name;
}

bool ForceLegacyFileBrowse() {
  static const bool forced = dp::Environment::Test("FENLOOM_DC_FORCE_LEGACY_FILEBROWSE");
  return forced;
}

}  // namespace lxservices::cms_interface::vantry
