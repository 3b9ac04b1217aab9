#include "simulator/routes/routes.h"
#include "simulator/routes/write_route.h"
#include "simulator/wire/json_members.h"

namespace vantry_sim {
namespace {

Response Register(const ServiceContext& context, JsonValue body) {
  if (!body.IsArray() || body.Size() == 0)
    return ErrorResponse(400, "bad-body", "the body is an array of versions");
  for (const JsonValue value : body) {
    std::string problem, application;
    std::int64_t version = 0;
    JsonMembers members(value, problem);
    members.Text("authoringApplication", application, Presence::Required)
        .Number("authAppVersion", version, Presence::Required);
    members.Array("ndVersions");
    if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
    context.database
        .Prepare("INSERT OR IGNORE INTO application_versions(application, version) VALUES(?1, ?2)")
        .Bind(application, std::to_string(version))
        .Run();
  }
  Response response;
  response.status = 204;
  return response;
}

}  // namespace

void AddApplicationVersionRoutes(Router& router, const ServiceContext& context) {
  AddWrite(router, context,
           {"servlet/rest/v1/dkm/registerauthappversions",
            "array of `authoringApplication`, `authAppVersion`: 204"},
           [&context](const Request&, JsonValue body) { return Register(context, body); });
}

}  // namespace vantry_sim
