#include "browsing/containers.h"

#include "base/failure_step.h"
#include "browsing/odata_rows.h"
#include "connection/json_members.h"
#include "connection/url_escape.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* containersPath = "servlet/odata/v5/DataAdmin/Containers";

}  // namespace

std::string FindContainerId(ServerContext& server, const std::string& name, std::string_view type) {
  const FailureStep step("find the context");
  std::string path = containersPath;
  if (!type.empty()) path.append("/").append(type);
  path += "?$select=ID&$filter=" + EscapeForUrl("Name eq '" + name + "'");
  std::string id;
  bool found = false;
  bool ambiguous = false;
  (void)VisitODataPages(server, path, [&](const rapidjson::Value& rows) {
    for (const auto& row : rows.GetArray()) {
      const rapidjson::Value* rowId = FindString(row, "ID");
      if (rowId == nullptr) continue;
      // A name must mean exactly one container; with two, neither is taken.
      ambiguous = found;
      if (ambiguous) return false;
      found = true;
      id = TextView(*rowId);
    }
    return true;
  });
  if (ambiguous) ReportReason({FailureKind::Ambiguous});
  return ambiguous ? std::string() : id;
}

bool ListContainers(ServerContext& server, std::string_view type, const DirEntryCallback& callback) {
  const FailureStep step("list the contexts");
  const std::string path = std::string(containersPath).append("/").append(type) + "?$select=ID,Name";
  return VisitODataPages(server, path, [&](const rapidjson::Value& rows) {
    for (const auto& row : rows.GetArray()) {
      const rapidjson::Value* id = FindString(row, "ID");
      const rapidjson::Value* name = FindString(row, "Name");
      if (id == nullptr || name == nullptr) continue;
      DirEntryInfoExt entry;
      entry.name = name->GetString();
      entry.id = id->GetString();
      entry.isDirectory = true;
      callback(entry);
    }
    return true;
  });
}

}  // namespace lxservices::cms_interface::vantry
