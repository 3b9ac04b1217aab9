#include "simulator/routes/routes.h"
#include "simulator/store/folder_store.h"
#include "simulator/wire/forbidden_characters.h"
#include "simulator/wire/json.h"

namespace vantry_sim {
namespace {

/// The context that the three names in the path stand for.
std::optional<std::int64_t> FindContext(const ServiceContext& context, const Request& request) {
  // A class is between two colons of an id: `OR:vn.product.Product:101`.
  auto statement = context.database.Prepare(
      "SELECT id FROM contexts WHERE name = ?1 AND organization = ?2 AND instr(oid, ':' || ?3 || ':') > 0 "
      "ORDER BY id");
  statement.Bind(request.Path("name"), request.Path("organization"), request.Path("class"));
  if (!statement.Step()) return std::nullopt;
  return statement.Integer(0);
}

/// One element names either a folder, by the `path` that lists it, or a file, by what comes after the last
/// "/". Old gateways write names as they are, even those with a "/" in them; new ones escape the ten
/// forbidden characters.
Response Listing(const ServiceContext& context, const Request& request) {
  const auto found = FindContext(context, request);
  if (!found)
    return ErrorResponse(404, "no-such-context", "no context of this name and class in the organization");
  const auto folder = FindFolderByPath(context.database, *found, request.Query("path").value_or(""));
  if (!folder) return ErrorResponse(404, "no-such-folder", "no folder at this path");

  const bool escapes = context.options.gatewayEscapes;
  const auto shown = [&](const std::string& name) { return escapes ? EscapeForbidden(name) : name; };
  const std::string place = "organizations/" + request.Path("organization") + "/" + request.Path("name");
  std::string parent = request.Query("path").value_or("");
  while (parent.ends_with('/')) parent.pop_back();
  if (!parent.empty()) parent += '/';

  JsonText json;
  json.StartObject().Key("folderContent").StartArray();
  for (const FolderRow& below : SubFolders(context.database, folder->key)) {
    json.String(place + "/folders?path=" + parent + shown(below.name));
  }
  // In the order of the OData lists: the dynamic documents first, each kind newest first.
  auto documents = context.database.Prepare(
      "SELECT m.cad_name FROM iterations i JOIN masters m ON m.id = i.master WHERE i.folder = ?1 AND "
      "i.service = ?2 "
      "AND i.is_latest = 1 AND i.workspace IS NULL ORDER BY i.version_key DESC, i.id");
  for (const char* service : {"dynamic", "cad"}) {
    documents.Bind(folder->key, service);
    while (documents.Step()) json.String(place + "/documents/" + shown(documents.Text(0)));
    documents.Reset();
  }
  json.EndArray().EndObject();
  Response response;
  response.body = json.Take();
  return response;
}

}  // namespace

void AddGatewayRoutes(Router& router, const ServiceContext& context) {
  router.Add(
      "GET", "servlet/rest/snx_gw/organizations/{organization}/{class}/{name}/folders",
      [&context](const Request& request) { return Listing(context, request); },
      "one folder of a context by its `?path=`: texts in `folderContent`");
}

}  // namespace vantry_sim
