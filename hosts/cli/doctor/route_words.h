#pragma once

#include <string>

namespace vtdirect_cli {

/// How requests go to a server.
struct Route {
  bool isProxy = false;  ///< whether a proxy was named; an exception of the environment may still go past it
  std::string words;     ///< "direct", or the proxy without its login, and who named it
};

/// By the transport settings in force and the environment. Makes no request.
[[nodiscard]] Route RouteNow(const std::string& url);

}  // namespace vtdirect_cli
