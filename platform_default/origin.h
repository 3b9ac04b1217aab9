#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vtdirect::platform {

/// A server as credentials and redirects know it: scheme, host and port, and nothing else of its URL.
struct Origin {
  std::string scheme;      ///< "http" or "https"
  std::string host;        ///< in lower case; an IPv6 address is in its brackets
  std::uint16_t port = 0;  ///< always the real one

  /// The text that a URL on this origin begins with, without a closing "/". The scheme's own port is left
  /// out.
  [[nodiscard]] std::string Text() const;
  friend bool operator==(const Origin&, const Origin&) = default;
};

/// The origin of a URL; nothing for another scheme than http and https, an empty or unfit host, or a port
/// outside 1 to 65535. User name and password of the URL are passed over. Pure function.
[[nodiscard]] std::optional<Origin> OriginOf(const std::string& url);

}  // namespace vtdirect::platform
