#include "translation/xliff_context.h"

#include <map>
#include <vector>

#include "base/failure_step.h"
#include "connection/json_members.h"
#include "connection/odata_page_reader.h"
#include "connection/rest_items.h"

namespace lxservices::cms_interface::vantry {
namespace {

struct Container {
  std::string type;
  std::string name;
};

/// Container id to what it is.
using ContainerMatch = std::map<std::string, Container>;

// ASCII only: context types are words of the server's own, and no locale counts.
std::string UpperCase(std::string text) {
  for (char& character : text) {
    if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
  }
  return text;
}

std::string TextOf(const rapidjson::Value& object, std::string_view name) {
  const rapidjson::Value* value = FindString(object, name);
  return value != nullptr ? std::string(TextView(*value)) : std::string();
}

bool HoldsFolder(const rapidjson::Value& container, const std::string& folderId) {
  const rapidjson::Value* folders = FindArray(container, "Folders");
  if (folders == nullptr) return false;
  for (const auto& folder : folders->GetArray()) {
    const rapidjson::Value* id = FindString(folder, "ID");
    if (id != nullptr && TextView(*id) == folderId) return true;
  }
  return false;
}

ContainerMatch ReadContainers(ServerContext& server, const std::string& cabinetId) {
  ContainerMatch containers;
  ODataPageReader reader(server, "servlet/odata/v1/DataAdmin/Containers?$expand=Folders");
  while (reader.Next()) {
    if (!reader.page().IsObject()) break;
    const rapidjson::Value* rows = FindArray(reader.page(), "value");
    if (rows == nullptr) continue;
    for (const auto& row : rows->GetArray()) {
      if (HoldsFolder(row, cabinetId))
        containers[TextOf(row, "ID")] = {TextOf(row, "Type"), TextOf(row, "Name")};
    }
  }
  return containers;
}

std::string AttributeOf(const RestItem& item, const std::string& name) {
  const auto attribute = item.attributes.find(name);
  return attribute != item.attributes.end() ? attribute->second : std::string();
}

}  // namespace

std::string FindContextByCabinet(ServerContext& server, const std::string& contextName,
                                 const std::string& cabinetId, const std::string& /*contextType*/) {
  const FailureStep step("find the context");
  ContainerMatch containers = ReadContainers(server, cabinetId);
  if (containers.size() > 1) {
    std::erase_if(containers, [&](const auto& entry) { return entry.second.name != contextName; });
  }
  // Contexts of one name that share a cabinet never yield a context, even where the type would tell them
  // apart. That outcome is to stay: nothing is stored where the place is in doubt.
  return containers.size() == 1 ? containers.begin()->first : std::string();
}

std::optional<std::string> FindContextByName(ServerContext& server, const std::string& contextName,
                                             const std::string& contextType) {
  const FailureStep step("find the context");
  const auto [status, contexts] =
      ReadRestItems(server.http(), "servlet/rest/v1/contexts", RestListForm::Wrapped);
  if (status != Ok) return std::nullopt;
  const std::string wantedType = UpperCase(contextType);
  for (const RestItem& context : contexts) {
    if (AttributeOf(context, "name") != contextName) continue;
    if (UpperCase(AttributeOf(context, "type")) != wantedType) continue;
    return context.id;
  }
  return std::string();
}

}  // namespace lxservices::cms_interface::vantry
