#include "connection/rest_request.h"

#include "base/text.h"

#include <string_view>
#include <utility>

namespace lxservices::cms_interface::vantry {
namespace {

constexpr std::string_view acceptJson = "Accept: application/json";

void AddLine(std::string& headers, std::string_view line) {
  if (!headers.empty()) headers += "\r\n";
  headers += line;
}

}  // namespace

RestRequest MakeRestRequest(std::shared_ptr<HttpConnection> connection, du::http::Method method,
                            const char* path, const char* bodyFile, const char* contentType,
                            const char* extraHeaders) {
  RestRequest request{std::move(connection), method, path, bodyFile, {}};
  if (contentType != nullptr) {
    AddLine(request.headers, std::string("Content-Type: ") + contentType);
  } else if (bodyFile != nullptr) {
    AddLine(request.headers, "Content-Type: application/json");
  }
  AddLine(request.headers, acceptJson);
  if (IsGiven(extraHeaders)) AddLine(request.headers, extraHeaders);
  return request;
}

RestRequest MakeGetRequest(std::shared_ptr<HttpConnection> connection, const char* path,
                           const char* extraHeaders) {
  RestRequest request{std::move(connection), du::http::Method::Get, path, nullptr, {}};
  if (IsGiven(extraHeaders)) AddLine(request.headers, extraHeaders);
  AddLine(request.headers, acceptJson);
  return request;
}

}  // namespace lxservices::cms_interface::vantry
