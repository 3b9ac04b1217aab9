#include "simulator/store/uploads.h"

#include "simulator/routes/write_route.h"
#include "simulator/wire/json.h"

namespace vantry_sim {
namespace {

Response Receipts(const std::vector<ReceivedStream>& streams, const std::vector<std::string>& receipts) {
  JsonText json;
  json.StartObject().Key("contentInfos").StartArray();
  for (std::size_t i = 0; i < streams.size(); ++i) {
    json.StartObject().Member("streamId", streams[i].stream).Member("encodedInfo", receipts[i]);
    json.Member("fileSize", static_cast<std::int64_t>(streams[i].size)).EndObject();
  }
  json.EndArray().EndObject();
  Response response;
  response.body = json.Take();
  return response;
}

}  // namespace

std::unique_ptr<UploadReceiver> ReceiverFor(const ServiceContext& context, const Request& request,
                                            Response& refusal) {
  const std::string start = context.options.prefix + std::string(uploadPath);
  if (!request.path.starts_with(start) || request.method != "POST") {
    refusal = ErrorResponse(404, "no-such-route", "this port takes uploads for tickets alone");
    return nullptr;
  }
  if (auto missing = RefuseUploadNonce(context, request)) {
    refusal = std::move(*missing);
    return nullptr;
  }
  auto ticket = FindTicket(context.database, request.path.substr(start.size()), request.user);
  if (!ticket) {
    refusal = ErrorResponse(404, "no-such-ticket", "this user has no unused ticket for this address");
    return nullptr;
  }
  const std::string boundary = BoundaryOf(request.contentType);
  if (boundary.empty()) {
    refusal = ErrorResponse(415, "no-multipart", "an upload is multipart/form-data with a boundary");
    return nullptr;
  }
  return std::make_unique<UploadReceiver>(context.contents, std::move(*ticket), boundary);
}

Response StoreUpload(const ServiceContext& context, UploadReceiver& upload, const Request& request) {
  if (!FindTicket(context.database, upload.ticket().token, request.user)) {
    return ErrorResponse(409, "ticket-used", "another upload has used the ticket meanwhile");
  }
  // The bytes come first. A process killed between the two leaves files that nothing names, and the ticket.
  if (!upload.Keep()) return ErrorResponse(507, "disk-full", "the server's disk doesn't take the files");
  Transaction transaction(context.database);
  const auto receipts = AcceptUpload(context.database, upload.ticket(), request.user, upload.streams());
  transaction.Commit();
  return Receipts(upload.streams(), receipts);
}

}  // namespace vantry_sim
