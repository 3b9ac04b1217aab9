#include "simulator/wire/own_request.h"

#include <string_view>

namespace vantry_sim {
namespace {

/// The HTTP library doesn't know a body's type under this name.
constexpr const char* bodyType = "X-Vantry-Sim-Body-Type";

/// Which server's page a browser asks for. What a page of another server loads may come without an Origin,
/// and newer browsers say so in another way. Whoever follows a link to here asks for nobody else.
std::string OriginOf(const RequestHead& head) {
  const std::string_view origin = head.Header("Origin");
  const std::string_view site = head.Header("Sec-Fetch-Site");
  const bool foreign = site == "cross-site" || site == "same-site";
  return std::string(origin.empty() && foreign && head.Header("Sec-Fetch-Mode") != "navigate" ? "null"
                                                                                              : origin);
}

}  // namespace

bool HasBody(const httplib::Request& request) {
  return request.has_header("Transfer-Encoding") ||
         (request.has_header("Content-Length") && request.get_header_value("Content-Length") != "0");
}

bool TakesBody(const std::string& method) {
  return method == "POST" || method == "PUT" || method == "PATCH" || method == "DELETE";
}

void HideMultipartType(httplib::Request& request) {
  if (!request.is_multipart_form_data()) return;
  const std::string type = request.get_header_value("Content-Type");
  request.headers.erase("Content-Type");
  request.set_header(bodyType, type);
}

Request OwnRequest(const httplib::Request& request, const RequestHead& head, const std::string& user) {
  Request own;
  own.method = request.method == "HEAD" ? "GET" : request.method;
  own.target = request.target;
  own.client = request.remote_addr;
  own.host = request.get_header_value("Host");
  own.origin = OriginOf(head);
  own.prefer = request.get_header_value("Prefer");
  own.nonce = request.get_header_value("X-Zvk-Nonce");
  own.contentType = request.get_header_value(request.has_header(bodyType) ? bodyType : "Content-Type");
  // A part can only be joined to what the client has when the server says what it is a part of, and this one
  // gives contents no name to compare.
  if (request.method == "GET" && !request.has_header("If-Range")) own.range = head.Header("Range");
  own.user = user;
  own.cookies = head.Header("Cookie");
  own.authorization = head.Header("Authorization");
  return own;
}

}  // namespace vantry_sim
