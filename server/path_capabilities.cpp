#include "server/path_capabilities.h"

#include "browsing/vfs_tree.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Whether the path is one that is browsed by OData, on a server that can do that.
bool IsBrowsedByOData(std::string_view path) {
  if (path.empty()) return false;
  return IsVfsName(SplitFilePath(path).section, VfsNameId::Folders) && !ForceLegacyFileBrowse();
}

}  // namespace

bool IsPathWritable(std::string_view path) {
  if (path.empty()) return false;
  const ParsedVfsPath parsed = SplitFilePath(path);
  if (IsVfsName(parsed.section, VfsNameId::Folders)) return true;
  return IsVfsName(parsed.section, VfsNameId::Workspaces) && !parsed.folderPath.empty();
}

bool CanPathShowDetails(ServerContext& server, std::string_view path) {
  return IsBrowsedByOData(path) && server.Services().folderContents;
}

bool CanPathShowVersions(ServerContext& server, std::string_view path) {
  return IsBrowsedByOData(path) && server.Services().dataAdminV5;
}

}  // namespace lxservices::cms_interface::vantry
