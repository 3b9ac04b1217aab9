#include "hosts/cli/doctor/route_words.h"

#include <vtdirect/platform/http_settings.h>

#include <vector>

#include "hosts/cli/program/environment.h"

namespace vtdirect_cli {
namespace {

// A proxy's URL may hold a login.
[[nodiscard]] std::string WithoutLogin(const std::string& proxy) {
  const std::size_t scheme = proxy.find("://");
  const std::size_t start = scheme == std::string::npos ? 0 : scheme + 3;
  const std::size_t at = proxy.rfind('@');
  return at == std::string::npos || at < start ? proxy : proxy.substr(0, start) + proxy.substr(at + 1);
}

}  // namespace

Route RouteNow(const std::string& url) {
  const auto named = du::http::GetTransportSettings().proxy;
  if (named && named->empty())
    return {.isProxy = false, .words = "direct, as --proxy or the server's section says"};
  if (named)
    return {
        .isProxy = true,
        .words = "through the proxy " + WithoutLogin(*named) + ", as --proxy or the server's section says"};
  const bool isTls = url.starts_with("https:");
  // HTTP_PROXY in capital letters is not looked at: a web server's programs get it from a header line.
  const std::vector<std::string> names =
      isTls ? std::vector<std::string>{"https_proxy", "HTTPS_PROXY"} : std::vector<std::string>{"http_proxy"};
  std::vector<std::string> all = names;
  all.insert(all.end(), {"all_proxy", "ALL_PROXY"});
  for (const std::string& name : all) {
    const std::string proxy = Environment(name.c_str());
    if (proxy.empty()) continue;
    const bool hasExceptions = !Environment("no_proxy").empty() || !Environment("NO_PROXY").empty();
    return {.isProxy = true,
            .words = "through the proxy " + WithoutLogin(proxy) + ", as " + name + " says" +
                     (hasExceptions ? ", unless no_proxy names the host" : "")};
  }
  return {.isProxy = false, .words = "direct; no proxy is named"};
}

}  // namespace vtdirect_cli
