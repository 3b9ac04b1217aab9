#include "simulator/routes/write_route.h"

#include <utility>

#include "simulator/wire/json_reader.h"

namespace vantry_sim {
namespace {

Response WrongNonce(const Request& request) {
  return ErrorResponse(403, "nonce",
                       request.nonce.empty() ? "a request that writes brings the header X-Zvk-Nonce"
                                             : "the nonce is not this server's, or not this session's");
}

Response Write(const ServiceContext& context, const Request& request, const WriteHandler& handler) {
  if (auto refusal = RefuseNonce(context, request)) return std::move(*refusal);
  if (!request.contentType.starts_with("application/json")) {
    return ErrorResponse(415, "no-json", "the body must come as application/json");
  }
  const auto body = ReadJson(request.body);
  if (!body) return ErrorResponse(400, "broken-json", "the body is no JSON text");

  Transaction transaction(context.database);
  Response response = handler(request, body->Root());
  if (response.status >= 200 && response.status < 300) transaction.Commit();
  return response;
}

}  // namespace

Refusal RefuseNonce(const ServiceContext& context, const Request& request) {
  if (context.nonces.Accepts(request)) return std::nullopt;
  return WrongNonce(request);
}

Refusal RefuseUploadNonce(const ServiceContext& context, const Request& request) {
  if (context.nonces.AcceptsUpload(request)) return std::nullopt;
  return WrongNonce(request);
}

void AddWrite(Router& router, const ServiceContext& context, const WriteRoute& route, WriteHandler handler) {
  router.Add(
      route.method, route.pattern,
      [&context, handler = std::move(handler)](const Request& request) {
        return Write(context, request, handler);
      },
      route.about);
}

}  // namespace vantry_sim
