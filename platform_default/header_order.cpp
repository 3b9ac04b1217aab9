#include "platform_default/header_order.h"

#include <algorithm>
#include <string_view>

#include "platform_default/header_lines.h"

namespace vtdirect::platform {
namespace {

/// curl takes "Name:" as an order to leave a line out, and "Name;" for a line without a value.
std::string AsCurlWantsIt(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (line.find_first_not_of(" \t", colon + 1) != std::string_view::npos) return std::string(line);
  return std::string(line.substr(0, colon)) + ";";
}

}  // namespace

HeaderOrder OrderOf(const OutgoingRequest& request, BodyFraming framing) {
  return {{request.headerLines.begin(), request.headerLines.end()},
          request.method,
          request.asksForCompression,
          framing};
}

bool IsMadeFor(const HeaderOrder& order, const OutgoingRequest& request, BodyFraming framing) {
  return order.method == request.method && order.asksForCompression == request.asksForCompression &&
         order.framing == framing &&
         std::equal(order.lines.begin(), order.lines.end(), request.headerLines.begin(),
                    request.headerLines.end());
}

std::vector<std::string> LinesForCurl(const OutgoingRequest& request, BodyFraming framing) {
  std::vector<std::string> lines;
  for (const std::string_view line : request.headerLines) lines.push_back(AsCurlWantsIt(line));
  if (!ContainsHeader(request.headerLines, "Accept")) lines.emplace_back("Accept:");
  if (request.asksForCompression) lines.emplace_back("Accept-Encoding: gzip, deflate");
  if (request.asksForIdentity) lines.emplace_back("Accept-Encoding: identity");
  if (request.method == du::http::Method::Get) return lines;
  if (!ContainsHeader(request.headerLines, "Content-Type")) lines.emplace_back("Content-Type:");
  // Waiting for "100 Continue" costs a round trip, or a second where the server does not know it.
  lines.emplace_back("Expect:");
  if (framing == BodyFraming::Chunked) lines.emplace_back("Transfer-Encoding: chunked");
  return lines;
}

}  // namespace vtdirect::platform
