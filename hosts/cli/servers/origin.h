#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vtdirect_cli {

/// Scheme, host and port of a URL: the unit that credentials are given to.
struct Origin {
  std::string scheme;  ///< "http" or "https"
  std::string host;    ///< lower case; an IPv6 address without its brackets
  int port = 0;        ///< the scheme's own when the URL names none
  friend bool operator==(const Origin&, const Origin&) = default;
};

/// The origin of an "http" or "https" URL; nothing for any other text, for an authority with a user in it,
/// and for a port that is none.
[[nodiscard]] std::optional<Origin> OriginOf(std::string_view url);

/// The origin as a URL without a path, for prompts and messages.
[[nodiscard]] std::string TextOf(const Origin& origin);

}  // namespace vtdirect_cli
