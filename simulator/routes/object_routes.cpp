#include <optional>

#include "simulator/routes/routes.h"
#include "simulator/store/document_store.h"
#include "simulator/wire/json.h"
#include "simulator/wire/object_filter.h"

namespace vantry_sim {
namespace {

constexpr std::string_view documentType = "vn.epm.EPMDocument";

struct SelectedAttributes {
  bool number = false;
  bool name = false;
  bool cadName = false;
};

std::optional<SelectedAttributes> ReadSelect(std::string_view text) {
  SelectedAttributes selected;
  while (!text.empty()) {
    const auto comma = text.find(',');
    const std::string_view word = text.substr(0, comma);
    text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
    if (word == "number") {
      selected.number = true;
    } else if (word == "name") {
      selected.name = true;
    } else if (word == "CADName") {
      selected.cadName = true;
    } else {
      return std::nullopt;
    }
  }
  return selected;
}

void WriteObject(JsonText& json, const DocumentRow& document, const SelectedAttributes& selected) {
  json.StartObject().Member("id", document.oid).Member("typeId", documentType);
  json.Key("attributes").StartObject();
  if (selected.number) json.Member("number", document.number);
  if (selected.name) json.Member("name", document.masterName);
  if (selected.cadName) json.Member("CADName", document.cadName);
  json.EndObject().EndObject();
}

Response Objects(const ServiceContext& context, const Request& request) {
  if (request.Query("typeId") != documentType) {
    return ErrorResponse(400, "unknown-type", "typeId must be vn.epm.EPMDocument");
  }
  const auto filter = ParseObjectFilter(request.Query("$filter").value_or(""));
  if (!filter)
    return ErrorResponse(400, "bad-filter", "$filter must be CADName, number or name, eq, and a text");
  const auto selected = ReadSelect(request.Query("$select").value_or("number,name,CADName"));
  if (!selected) return ErrorResponse(400, "bad-select", "$select takes number, name and CADName");

  // This list is a bare array, unlike the lists of contexts.
  JsonText json;
  json.StartArray();
  for (const DocumentRow& document :
       FindLatestByProperty(context.database, filter->property, filter->value)) {
    WriteObject(json, document, *selected);
  }
  json.EndArray();
  Response response;
  response.body = json.Take();
  return response;
}

}  // namespace

void AddObjectRoutes(Router& router, const ServiceContext& context) {
  router.Add(
      "GET", "servlet/rest/objects", [&context](const Request& request) { return Objects(context, request); },
      "latest versions by `CADName`, `number` or `name`, as a bare array: "
      "`?typeId=vn.epm.EPMDocument&$select=number&$filter=CADName eq '...'`");
}

}  // namespace vantry_sim
