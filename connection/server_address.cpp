#include "connection/server_address.h"

#include <algorithm>
#include <string_view>

#include "platform/uri.h"

namespace du::http {

// Weak, so that the library links with a platform that has no settings; its address is then null.
TransportSettings GetTransportSettings() __attribute__((weak));

}  // namespace du::http

namespace lxservices::cms_interface::vantry {
namespace {

using du::http::HttpAddresses;

bool HasScheme(const std::string& url, std::string_view scheme) {
  const std::string found = du::GetURIPart(url, du::URIPart::Scheme);
  return std::equal(found.begin(), found.end(), scheme.begin(), scheme.end(), [](char left, char right) {
    return (left >= 'A' && left <= 'Z' ? static_cast<char>(left - 'A' + 'a') : left) == right;
  });
}

// The port of http, where it is named, would be no port of https; any other is taken for one.
std::string Secured(const std::string& url) {
  std::string secured = url;
  const auto [position, count] = du::GetURIPartPosCount(url, du::URIPart::Port);
  if (count > 0 && url.compare(position, count, "80") == 0) secured.erase(position - 1, count + 1);
  return "https" + secured.substr(du::GetURIPart(url, du::URIPart::Scheme).size());
}

}  // namespace

std::optional<std::string> AddressToAsk(const std::string& server, const std::string& url,
                                        HttpAddresses rule) {
  if (rule == HttpAddresses::Allow || !HasScheme(server, "https") || !HasScheme(url, "http")) return url;
  if (rule == HttpAddresses::Upgrade) return Secured(url);
  return std::nullopt;
}

HttpAddresses HttpAddressRule() {
  if (du::http::GetTransportSettings == nullptr) return HttpAddresses::Allow;
  return du::http::GetTransportSettings().httpAddresses;
}

}  // namespace lxservices::cms_interface::vantry
