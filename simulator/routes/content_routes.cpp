#include <charconv>
#include <system_error>

#include "simulator/routes/routes.h"
#include "simulator/store/document_store.h"

namespace vantry_sim {
namespace {

std::optional<std::int64_t> StreamNumber(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (code != std::errc() || end != text.data() + text.size() || number <= 0) return std::nullopt;
  return number;
}

Response Content(const ServiceContext& context, const Request& request) {
  const auto stream = StreamNumber(request.Path("stream"));
  if (!stream) return ErrorResponse(400, "bad-stream", "a stream is named by a number");
  const auto size = StreamSize(context.database, *stream);
  if (!size) return ErrorResponse(404, "no-such-stream", "no stream with this number");

  Response response;
  response.contentType = "application/octet-stream";
  response.file = FileBody{context.contents.PathOf(*stream), static_cast<std::uint64_t>(*size)};
  return response;
}

}  // namespace

void AddContentRoutes(Router& router, const ServiceContext& context) {
  router.Add(
      "GET", "servlet/rest/v1/content/streams/{stream}/{name}",
      [&context](const Request& request) { return Content(context, request); },
      "the bytes of a stream, under any name; with `Range` one part of them and 206, or all of them and 200");
}

}  // namespace vantry_sim
