#include "simulator/wire/http_refusals.h"

#include <string>

#include "simulator/wire/messages.h"

namespace vantry_sim {

namespace {

struct Reason {
  int status;
  const char* phrase;
  const char* code;
  const char* message;
};

constexpr Reason reasons[] = {
    {408, "Request Timeout", "head-too-slow", "the head of the request took too long"},
    {431, "Request Header Fields Too Large", "head-too-long", "the head of the request has no end in sight"},
    {503, "Service Unavailable", "too-many-connections", "the server has no room for another connection"},
};

}  // namespace

void SendRefusal(ConnectionStream& stream, int status) {
  for (const Reason& reason : reasons) {
    if (reason.status != status) continue;
    const Response refusal = ErrorResponse(status, reason.code, reason.message);
    stream.SendWithoutWaiting("HTTP/1.1 " + std::to_string(status) + " " + reason.phrase +
                              "\r\nConnection: close\r\nContent-Type: " + refusal.contentType +
                              "\r\nContent-Length: " + std::to_string(refusal.body.size()) + "\r\n\r\n" +
                              refusal.body);
  }
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
  response.set_content(refusal.body, refusal.contentType);
}

}  // namespace vantry_sim
