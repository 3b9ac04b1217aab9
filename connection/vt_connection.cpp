#include "connection/vt_connection.h"

#include "connection/csrf_nonce.h"

namespace lxservices::cms_interface::vantry {

VtConnection::VtConnection(const std::string& url, AuthFunction auth, Reach reach)
    : http_(std::make_shared<HttpConnection>(url, auth, reach)), auth_(auth) {}

std::string VtConnection::CsrfHeader() {
  if (csrfHeader_.empty()) csrfHeader_ = FetchRestCsrf(http_);
  return csrfHeader_;
}

const char* VtConnection::ODataHeaders() {
  return "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000";
}

std::string VtConnection::ODataWriteHeaders() {
  if (csrfHeader_.empty()) csrfHeader_ = FetchODataCsrf(http_);
  return std::string(ODataHeaders()) + "\r\n" + csrfHeader_;
}

std::shared_ptr<HttpConnection> VtConnection::MakeSideConnection(const std::string& url) const {
  if (url.empty()) return nullptr;
  return std::make_shared<HttpConnection>(url, auth_);
}

}  // namespace lxservices::cms_interface::vantry
