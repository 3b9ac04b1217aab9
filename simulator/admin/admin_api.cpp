#include "simulator/admin/admin_api.h"

#include <algorithm>

#include "simulator/pages/embedded_files.h"

namespace vantry_sim {
namespace {

/// The name in front of a port, brackets included.
std::string_view HostWithoutPort(std::string_view host) {
  const auto colon = host.rfind(':');
  const auto bracket = host.rfind(']');
  const bool hasPort =
      colon != std::string_view::npos && (bracket == std::string_view::npos || colon > bracket);
  return hasPort ? host.substr(0, colon) : host;
}

/// A page from elsewhere may have its own name lead here, and then ask as if it were from here.
bool IsLoopbackName(std::string_view host) {
  const std::string_view name = HostWithoutPort(host);
  return name == "127.0.0.1" || name == "localhost" || name == "[::1]";
}

/// Whether a browser sends this for a page of this port, or no browser does.
bool IsFromHere(const Request& request) {
  return request.origin.empty() || request.origin == "http://" + request.host;
}

Response File(std::string_view name) {
  const EmbeddedFile* file = FindEmbeddedFile(name);
  if (file == nullptr) return ErrorResponse(404, "no-such-file", "this program has no such file in it");
  Response response;
  response.contentType = file->type;
  response.body = file->bytes;
  response.headers = PageHeaders();
  return response;
}

}  // namespace

AdminApi::AdminApi(Simulator& simulator) {
  router_.Add(
      "GET", "", [](const Request&) { return File("admin.html"); }, "the live view of requests and faults");
  router_.Add(
      "GET", "files/{name}", [](const Request& request) { return File(request.Path("name")); },
      "what the live view is made of");
  router_.Add(
      "GET", "openapi.json", [](const Request&) { return File("openapi.json"); },
      "the description of this port");
  AddStateRoutes(router_, simulator);
  AddTrafficRoutes(router_, simulator);
  AddAccessRoutes(router_, simulator);
  AddDocumentControlRoutes(router_, simulator);
}

Response AdminApi::Handle(Request& request) {
  if (!IsLoopbackName(request.host))
    return ErrorResponse(403, "foreign-host", "this port answers to 127.0.0.1, localhost and [::1] alone");
  if (!IsFromHere(request))
    return ErrorResponse(403, "foreign-page", "this port takes nothing from pages of other servers");
  const TargetParts parts = SplitTarget(request.target);
  auto query = ParseQuery(parts.query);
  if (!query)
    return ErrorResponse(400, "bad-escape", "a % in the query has no two hexadecimal digits after it");
  request.query = std::move(*query);
  request.path = parts.path;
  return router_.Dispatch(request, request.path);
}

OrRefusal<JsonDocument> ReadAdminBody(const Request& request, const std::vector<std::string_view>& members) {
  JsonProblem problem;
  // Without a body nothing was said, which some routes take.
  auto body =
      ReadJson(request.body.empty() ? std::string_view("{}") : std::string_view(request.body), &problem, 100);
  if (!body)
    return ErrorResponse(400, "broken-json", "line " + std::to_string(problem.line) + ": " + problem.reason);
  if (!body->Root().IsObject()) return ErrorResponse(400, "bad-body", "an object was expected");
  for (const JsonValue member : body->Root()) {
    if (std::find(members.begin(), members.end(), member.Name()) == members.end())
      return ErrorResponse(400, "bad-body", "nothing is known of the member " + std::string(member.Name()));
  }
  return std::move(*body);
}

Response AdminAnswer(const std::function<void(JsonText&)>& write, int status) {
  JsonText json;
  write(json);
  Response response;
  response.status = status;
  response.body = json.Take();
  return response;
}

Response AdminDone() {
  Response response;
  response.status = 204;
  return response;
}

}  // namespace vantry_sim
