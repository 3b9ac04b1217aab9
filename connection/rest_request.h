#pragma once

#include <memory>
#include <string>

#include "connection/http_connection.h"

namespace lxservices::cms_interface::vantry {

/// A JSON request as it is built. The texts behind the two pointers are not copied: the caller keeps them
/// alive while the record is used.
struct RestRequest {
  std::shared_ptr<HttpConnection> connection;
  du::http::Method method = du::http::Method::Get;
  const char* path = nullptr;      ///< after the connection's base path, with its query
  const char* bodyFile = nullptr;  ///< local file that is the body; null for none
  std::string headers;             ///< joined by CR LF, none after the last
};

/// Builds a request with or without a body. Header lines in order: "Content-Type" (the one given, or JSON
/// when there is a body file), "Accept: application/json", then the extra ones.
/// @param contentType   may be null
/// @param extraHeaders  may be null or empty
[[nodiscard]] RestRequest MakeRestRequest(std::shared_ptr<HttpConnection> connection, du::http::Method method,
                                          const char* path, const char* bodyFile, const char* contentType,
                                          const char* extraHeaders);

/// Builds a GET. Header lines in order: the extra ones, then "Accept: application/json". The order is the
/// other way about than in MakeRestRequest; both are the wire that servers know, and stay.
[[nodiscard]] RestRequest MakeGetRequest(std::shared_ptr<HttpConnection> connection, const char* path,
                                         const char* extraHeaders);

}  // namespace lxservices::cms_interface::vantry
