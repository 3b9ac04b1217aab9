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

void ReadRows(RestStream& response, bool itemsWrapped, std::vector<RestItem>& rows) {
  rapidjson::Document document;
  if (!ParseJsonResponse(response, document)) return;
  const rapidjson::Value* list = itemsWrapped ? FindArray(document, "items") : nullptr;
  if (list == nullptr) list = &document;
  if (!list->IsArray()) return response.ReportBroken();
  for (const auto& element : list->GetArray()) rows.push_back(ReadItem(element));
}

Status StatusOfListing(int httpStatus) {
  if (IsSuccess(httpStatus)) return Ok;
  return httpStatus == 401 ? Unauthorized : ConnectionFailed;
}

}  // namespace

bool ReadRestItems(const std::shared_ptr<HttpConnection>& connection, const std::string& path,
                   std::vector<RestItem>& rows, bool itemsWrapped, Status* status) {
  RestStream response(MakeGetRequest(connection, path.c_str(), nullptr), {});
  if (response.succeeded()) ReadRows(response, itemsWrapped, rows);
  if (status != nullptr) *status = StatusOfListing(response.status());
  return response.succeeded();
}

}  // namespace lxservices::cms_interface::vantry
