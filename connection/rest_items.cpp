#include "connection/rest_items.h"

#include <utility>

#include "connection/json_members.h"
#include "connection/rest_stream.h"

namespace lxservices::cms_interface::vantry {
namespace {

RestItem ReadItem(const rapidjson::Value& element) {
  RestItem item;
  if (!element.IsObject()) return item;
  for (const auto& member : element.GetObject()) {
    const std::string_view name = TextView(member.name);
    if (name == "id") CopyString(member.value, item.id);
    if (name == "typeId") CopyString(member.value, item.typeId);
    if (name != "attributes" || !member.value.IsObject()) continue;
    for (const auto& attribute : member.value.GetObject()) {
      if (attribute.value.IsString()) {
        item.attributes[std::string(TextView(attribute.name))] = TextView(attribute.value);
      }
    }
  }
  return item;
}

std::vector<RestItem> ReadRows(RestStream& response, RestListForm form) {
  std::vector<RestItem> rows;
  rapidjson::Document document;
  if (!ParseJsonResponse(response, document)) return rows;
  const rapidjson::Value* list = form == RestListForm::Wrapped ? FindArray(document, "items") : nullptr;
  if (list == nullptr) list = &document;
  if (!list->IsArray()) {
    response.ReportBroken();
    return rows;
  }
  for (const auto& element : list->GetArray()) rows.push_back(ReadItem(element));
  return rows;
}

}  // namespace

Result<std::vector<RestItem>> ReadRestItems(const std::shared_ptr<HttpConnection>& connection,
                                            const std::string& path, RestListForm form) {
  RestStream response(MakeGetRequest(connection, path.c_str(), nullptr), {});
  if (response.succeeded()) return ReadRows(response, form);
  return response.status() == 401 ? Unauthorized : ConnectionFailed;
}

}  // namespace lxservices::cms_interface::vantry
