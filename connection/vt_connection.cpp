#include "connection/vt_connection.h"

#include <optional>

#include "base/failure_log.h"
#include "base/failure_trace.h"
#include "connection/csrf_nonce.h"
#include "connection/exchange_failure.h"
#include "connection/server_address.h"

namespace lxservices::cms_interface::vantry {

namespace {

std::shared_ptr<HttpConnection> RefuseAddress(const std::string& url) {
  EndedExchange exchange;
  exchange.server = url;
  exchange.isOwnAddress = false;
  Failure failure;
  failure.kind = FailureKind::AnswerBroken;
  failure.url = ShownUrl(exchange);
  failure.platformDetail = static_cast<int>(du::http::FailureDetail::AddressLeavesHttps);
  failure.platformText =
      "The server was asked by https and names an address with http, to which nothing is sent";
  failure.serverText =
      "If its proxy makes such addresses, set TransportSettings::httpAddresses "
      "(http_addresses of vtdirect) to Upgrade or Allow.";
  ReportFailure(failure);
  TracerFor(Follows())(dp::TraceType::Error, "Refused the address %s: %s. %s\n", failure.url.c_str(),
                       failure.platformText.c_str(), failure.serverText.c_str());
  return nullptr;
}

}  // namespace

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
  std::string headers(ODataHeaders());
  headers.append("\r\n").append(line);
  return headers;
}

std::shared_ptr<HttpConnection> VtConnection::MakeSideConnection(const std::string& url) const {
  if (url.empty()) return nullptr;
  const std::optional<std::string> address = AddressToAsk(http_->uri(), url, HttpAddressRule());
  if (!address) return RefuseAddress(url);
  return std::make_shared<HttpConnection>(*address, auth_, Reach::Given);
}

}  // namespace lxservices::cms_interface::vantry
