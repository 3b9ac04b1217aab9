#pragma once

#include <memory>
#include <string>

#include "connection/http_connection.h"

/// The nonce against cross-site request forgery, by the two routes that servers offer. Each makes one GET.
namespace lxservices::cms_interface::vantry {

/// Fetches the nonce by REST.
/// @return the complete header line, or the empty text on any failure
[[nodiscard]] std::string FetchRestCsrf(const std::shared_ptr<HttpConnection>& connection);

/// Fetches the nonce by OData.
/// @return the complete header line, or the empty text on any failure
[[nodiscard]] std::string FetchODataCsrf(const std::shared_ptr<HttpConnection>& connection);

}  // namespace lxservices::cms_interface::vantry
