#include "simulator/routes/routes.h"
#include "simulator/routes/write_route.h"
#include "simulator/store/upload_store.h"
#include "simulator/store/uploads.h"
#include "simulator/wire/json.h"
#include "simulator/wire/json_members.h"

namespace vantry_sim {
namespace {

Response Ticket(const ServiceContext& context, const Request& request, JsonValue body) {
  std::string problem;
  std::int64_t files = 0;
  JsonMembers(body, problem).Number("noOfFiles", files, Presence::Required);
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  if (files < 1 || files > mostFilesOfATicket) {
    return ErrorResponse(400, "bad-body",
                         "noOfFiles is a number from 1 to " + std::to_string(mostFilesOfATicket));
  }
  if (context.uploadPort == 0) return ErrorResponse(503, "no-uploads", "this server takes no uploads");

  const std::string masterUrl = BaseUrl(context, request) + "/servlet/rest/v1/content/master";
  const UploadTicket ticket = MakeTicket(context.database, context.contents, request.user, files, masterUrl);
  JsonText json;
  json.StartObject().Member("masterUrl", ticket.masterUrl);
  json.Member("uploadUrl", UploadBaseUrl(context, request) + std::string(uploadPath) + ticket.token);
  json.Key("fileNames").StartArray();
  for (const auto& [name, stream] : ticket.streams) json.String(name);
  // The ids come as texts here, and as numbers in the answer to the upload.
  json.EndArray().Key("streamIds").StartArray();
  for (const auto& [name, stream] : ticket.streams) json.String(std::to_string(stream));
  json.EndArray().EndObject();
  Response response;
  response.body = json.Take();
  return response;
}

}  // namespace

void AddCreationFactoryRoutes(Router& router, const ServiceContext& context) {
  const auto ticket = [&context](const Request& request, JsonValue body) {
    return Ticket(context, request, body);
  };
  AddWrite(router, context,
           {"servlet/rest/content/creationFactory",
            "`noOfFiles`, up to 100: a ticket of `masterUrl`, `uploadUrl`, `fileNames`, `streamIds`"},
           ticket);
  if (context.options.oldCreationFactory) return;
  AddWrite(router, context, {"servlet/rest/v1/content/creationFactory", "the same"}, ticket);
}

}  // namespace vantry_sim
