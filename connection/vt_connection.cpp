#include "connection/vt_connection.h"

#include "connection/csrf_nonce.h"

namespace lxservices::cms_interface::vantry {

VtConnection::VtConnection(const std::string& url, AuthFunction auth, Reach reach)
    : http_(std::make_shared<HttpConnection>(url, auth, reach)), auth_(auth) {}

std::string VtConnection::CsrfHeader() {
  const std::string known = knowledge_.NonceLine();
  return !known.empty() ? known : knowledge_.LearnNonceLine(FetchRestCsrf(http_));
}

const char* VtConnection::ODataHeaders() {
  return "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000";
}

std::string VtConnection::ODataWriteHeaders() {
  std::string line = knowledge_.NonceLine();
  if (line.empty()) line = knowledge_.LearnNonceLine(FetchODataCsrf(http_));
  return std::string(ODataHeaders()) + "\r\n" + line;
}

std::shared_ptr<HttpConnection> VtConnection::MakeSideConnection(const std::string& url) const {
  if (url.empty()) return nullptr;
  return std::make_shared<HttpConnection>(url, auth_, Reach::Given);
}

}  // namespace lxservices::cms_interface::vantry
