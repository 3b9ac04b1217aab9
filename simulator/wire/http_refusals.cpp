#include "simulator/wire/http_refusals.h"

#include <string>

#include "simulator/wire/messages.h"

namespace vantry_sim {

void SendHeadTooLong(ConnectionStream& stream) {
  const Response refusal = ErrorResponse(431, "head-too-long", "the head of the request has no end in sight");
  const std::string head =
      "HTTP/1.1 431 Request Header Fields Too Large\r\nConnection: close\r\nContent-Type: " +
      refusal.content_type + "\r\nContent-Length: " + std::to_string(refusal.body.size()) + "\r\n\r\n";
  if (stream.write(head.data(), head.size()) > 0) stream.write(refusal.body.data(), refusal.body.size());
}

void GiveReason(const httplib::Request& request, httplib::Response& response) {
  // A head that could not be read leaves the connection in the middle of nowhere.
  if (request.remote_port < 0) response.set_header("Connection", "close");
  if (!response.body.empty() || response.content_length_ > 0 || response.content_provider_) return;
  const char* reason = "the request could not be read";
  if (response.status == 404) reason = "this server has nothing at this path";
  if (response.status == 413) reason = "the body is longer than this server takes";
  if (response.status == 414) reason = "the request line is too long";
  if (response.status == 416) reason = "no such range";
  if (response.status >= 500) reason = "the server failed";
  const Response refusal = ErrorResponse(response.status, "refused", reason);
  response.set_content(refusal.body, refusal.content_type);
}

}  // namespace vantry_sim
