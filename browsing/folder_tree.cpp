#include "browsing/folder_tree.h"

#include <utility>

#include "base/failure_step.h"
#include "browsing/expanded_folders.h"
#include "browsing/odata_rows.h"
#include "connection/json_members.h"
#include "connection/url_escape.h"
#include "platform/files.h"

namespace lxservices::cms_interface::vantry {
namespace {

// One level more than the path has components, for the root folder, which the path does not name.
std::string ExpandedContainersPath(const std::string& contextName, std::string_view type,
                                   std::size_t components) {
  return std::string("servlet/odata/v1/DataAdmin/Containers/").append(type) +
         "?$expand=Folders($levels=" + std::to_string(components + 1) +
         ";$select=ID,Name)&$select=ID&$filter=" + EscapeForUrl("Name eq '" + contextName + "'");
}

}  // namespace

std::string ResolveFolderResource(ServerContext& server, const std::string& contextName,
                                  std::string_view type, const std::string& folderPath) {
  const FailureStep step("find the folder");
  du::FileSpec spec;
  spec.SetDirPath(folderPath);
  const FolderComponents components{spec.DirBegin(), spec.DirEnd()};
  std::string kept;
  const std::string path = ExpandedContainersPath(contextName, type, spec.DirCount());
  (void)VisitODataPages(server, path, [&](const rapidjson::Value& rows) {
    for (const auto& row : rows.GetArray()) {
      const rapidjson::Value* id = FindString(row, "ID");
      const rapidjson::Value* folders = FindArray(row, "Folders");
      if (id == nullptr || folders == nullptr) continue;
      const FolderWalk walk = WalkFolderTree(*folders, components);
      if (walk.resource.empty() || (!walk.isDefault && !kept.empty())) continue;
      kept = std::string("Containers('").append(TextView(*id)).append("')/").append(walk.resource);
      if (walk.isDefault) return false;
    }
    return true;
  });
  return kept;
}

}  // namespace lxservices::cms_interface::vantry
