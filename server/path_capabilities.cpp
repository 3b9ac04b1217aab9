#include "server/path_capabilities.h"

#include "browsing/vfs_tree.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Whether the path is browsed by OData if the server can do that, which `services` then tells.
bool MayBrowseByOData(const std::shared_ptr<VtConnection>& connection, ServiceFlags& services,
                      const char* path) {
  if (path == nullptr || *path == '\0') return false;
  if (!IsVfsName(SplitFilePath(path).section, VfsNameId::Folders) || ForceLegacyFileBrowse()) return false;
  EnsureServiceFlags(services, *connection);
  return true;
}

}  // namespace

bool IsPathWritable(const char* path) {
  if (path == nullptr || *path == '\0') return false;
  const ParsedVfsPath parsed = SplitFilePath(path);
  if (IsVfsName(parsed.section, VfsNameId::Folders)) return true;
  return IsVfsName(parsed.section, VfsNameId::Workspaces) && !parsed.folderPath.empty();
}

bool CanPathShowDetails(const std::shared_ptr<VtConnection>& connection, ServiceFlags& services,
                        const char* path) {
  return MayBrowseByOData(connection, services, path) && services.folderContents;
}

bool CanPathShowVersions(const std::shared_ptr<VtConnection>& connection, ServiceFlags& services,
                         const char* path) {
  return MayBrowseByOData(connection, services, path) && services.dataAdminV5;
}

}  // namespace lxservices::cms_interface::vantry
