#include "browsing/folder_ids.h"

#include <string_view>
#include <utility>
#include <vector>

#include "base/failure_step.h"
#include "browsing/expanded_folders.h"
#include "browsing/odata_rows.h"
#include "connection/json_members.h"
#include "connection/rest_items.h"
#include "connection/url_escape.h"
#include "platform/files.h"

namespace lxservices::cms_interface::vantry {
namespace {

// As many levels as the path has components, and not one more as for a resource: the rows of this answer are
// the root folders themselves.
std::string ExpandedRootFoldersPath(const std::string& containerId, std::size_t components) {
  return "servlet/odata/v1/DataAdmin/Containers('" + containerId +
         "')/Folders?$expand=Folders($levels=" + std::to_string(components) +
         ";$select=ID,Name)&$select=ID,Name";
}

bool IsDefaultRoot(const rapidjson::Value& row) {
  const rapidjson::Value* name = FindString(row, "Name");
  return name != nullptr && TextView(*name) == "Default";
}

// The id of the first row of a name. Without one the id stays what it was: the walk goes on from the
// folder that it has reached, so that an upload to a path with a wrong component lands in the deepest folder
// that exists. Servers of this generation are used that way, and it must not be tightened.
std::string IdOfNamed(const std::vector<RestItem>& rows, std::string_view name, std::string id) {
  for (const RestItem& row : rows) {
    const auto attribute = row.attributes.find("name");
    if (attribute == row.attributes.end() || attribute->second != name) continue;
    return row.id;
  }
  return id;
}

}  // namespace

std::string FindFolderIdOData(ServerContext& server, const std::string& containerId,
                              const std::string& folderPath) {
  const FailureStep step("find the folder");
  du::FileSpec spec;
  spec.SetDirPath(folderPath);
  const FolderComponents components{spec.DirBegin(), spec.DirEnd()};
  if (components.empty()) return {};
  std::string kept;
  const std::string path = ExpandedRootFoldersPath(containerId, spec.DirCount());
  (void)VisitODataPages(server, path, [&](const rapidjson::Value& rows) {
    for (const auto& row : rows.GetArray()) {
      std::string id = FindFolderIdBelow(row, components);
      if (id.empty()) continue;
      const bool isDefault = IsDefaultRoot(row);
      if (isDefault || kept.empty()) kept = std::move(id);
      // The rest of this page alone: later pages are read all the same.
      if (isDefault) break;
    }
    return true;
  });
  return kept;
}

std::string FindFolderIdRest(ServerContext& server, const std::string& contextId,
                             const std::string& folderPath) {
  const FailureStep step("find the folder");
  std::string_view rest = folderPath;
  std::string listPath = "servlet/rest/v1/contexts/" + EscapeForUrl(contextId) + "/folders";
  std::string id;
  while (!rest.empty()) {
    const auto [status, rows] = ReadRestItems(server.http(), listPath, RestListForm::Wrapped);
    if (status != Ok) return {};
    const auto slash = rest.find('/');
    id = IdOfNamed(rows, rest.substr(0, slash), std::move(id));
    if (id.empty() || slash == std::string_view::npos) break;
    rest.remove_prefix(slash + 1);
    listPath = "servlet/rest/v1/folders/" + EscapeForUrl(id) + "/folders";
  }
  return id;
}

}  // namespace lxservices::cms_interface::vantry
