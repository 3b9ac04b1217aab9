#include <algorithm>
#include <array>

#include "simulator/routes/routes.h"
#include "simulator/wire/json.h"

namespace vantry_sim {
namespace {

constexpr std::array<std::string_view, 5> kinds{"Product", "Library", "Project", "Site", "Organization"};

/// The class in the middle of an id such as `OR:vn.product.Product:101`.
std::string_view ClassOf(std::string_view oid) {
  const auto first = oid.find(':');
  const auto last = oid.rfind(':');
  return first == last ? std::string_view() : oid.substr(first + 1, last - first - 1);
}

Response ContextList(const ServiceContext& context, const Request& request) {
  const std::string kind = request.Query("type").value_or("");
  if (!kind.empty() && std::find(kinds.begin(), kinds.end(), kind) == kinds.end()) {
    return ErrorResponse(400, "unknown-type", "type must be Product, Library, Project, Site or Organization");
  }
  auto statement = context.database.Prepare(
      "SELECT oid, name, kind, organization FROM contexts WHERE ?1 = '' OR kind = ?1 ORDER BY name, id");
  statement.Bind(kind);
  JsonText json;
  json.StartObject().Key("items").StartArray();
  while (statement.Step()) {
    const std::string oid = statement.Text(0);
    json.StartObject().Member("id", oid).Member("typeId", ClassOf(oid));
    json.Key("attributes").StartObject();
    json.Member("name", statement.Text(1)).Member("type", statement.Text(2));
    json.Member("organizationReference.name", statement.Text(3)).EndObject();
    json.EndObject();
  }
  json.EndArray().EndObject();
  Response response;
  response.body = json.Take();
  return response;
}

}  // namespace

void AddContextRoutes(Router& router, const ServiceContext& context) {
  router.Add(
      "GET", "servlet/rest/v1/contexts",
      [&context](const Request& request) { return ContextList(context, request); },
      "contexts, in `items`; `?type=Product\\|Library\\|Project\\|Site\\|Organization` for those of a kind");
}

}  // namespace vantry_sim
