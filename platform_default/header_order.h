#pragma once

#include <string>
#include <vector>

#include "platform/http.h"
#include "platform_default/outgoing_request.h"

namespace vtdirect::platform {

/// How a server knows where the body of a request ends. A request without one is `BySize`.
enum class BodyFraming { BySize, Chunked };

/// What the header lines that curl is given depend on. Most requests of a handle have the same.
struct HeaderOrder {
  std::vector<std::string> lines;
  du::http::Method method = du::http::Method::Get;
  bool asksForCompression = false;
  BodyFraming framing = BodyFraming::BySize;
};

[[nodiscard]] HeaderOrder OrderOf(const OutgoingRequest& request, BodyFraming framing);

/// Whether the lines that were made for an order are those of this request, too.
[[nodiscard]] bool IsMadeFor(const HeaderOrder& order, const OutgoingRequest& request, BodyFraming framing);

/// The caller's lines, and after them what keeps curl from adding lines of its own.
[[nodiscard]] std::vector<std::string> LinesForCurl(const OutgoingRequest& request, BodyFraming framing);

}  // namespace vtdirect::platform
