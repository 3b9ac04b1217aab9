#include "hosts/cli/servers/origin.h"

#include <algorithm>
#include <charconv>

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::string Lower(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return out;
}

[[nodiscard]] int DefaultPort(const std::string& scheme) {
  return scheme == "https" ? 443 : 80;
}

[[nodiscard]] std::optional<int> PortOf(std::string_view digits) {
  int port = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  if (error != std::errc() || end != digits.data() + digits.size() || port < 1 || port > 65535) {
    return std::nullopt;
  }
  return port;
}

}  // namespace

std::optional<Origin> OriginOf(std::string_view url) {
  const std::size_t colon = url.find("://");
  if (colon == std::string_view::npos) return std::nullopt;
  Origin origin;
  origin.scheme = Lower(url.substr(0, colon));
  if (origin.scheme != "http" && origin.scheme != "https") return std::nullopt;
  origin.port = DefaultPort(origin.scheme);

  std::string_view authority = url.substr(colon + 3);
  authority = authority.substr(0, authority.find_first_of("/?#"));
  if (authority.find_first_of("@\\") != std::string_view::npos) return std::nullopt;

  std::string_view rest;
  if (authority.starts_with('[')) {
    const std::size_t bracket = authority.find(']');
    if (bracket == std::string_view::npos) return std::nullopt;
    origin.host = Lower(authority.substr(1, bracket - 1));
    rest = authority.substr(bracket + 1);
  } else {
    const std::size_t end = std::min(authority.find(':'), authority.size());
    origin.host = Lower(authority.substr(0, end));
    rest = authority.substr(end);
  }
  if (origin.host.empty()) return std::nullopt;
  if (rest.empty() || rest == ":") return origin;
  if (!rest.starts_with(':')) return std::nullopt;
  const std::optional<int> port = PortOf(rest.substr(1));
  if (!port) return std::nullopt;
  origin.port = *port;
  return origin;
}

std::string TextOf(const Origin& origin) {
  const bool bracketed = origin.host.find(':') != std::string::npos;
  std::string text = origin.scheme + "://" + (bracketed ? "[" + origin.host + "]" : origin.host);
  if (origin.port != DefaultPort(origin.scheme)) text += ":" + std::to_string(origin.port);
  return text;
}

}  // namespace vtdirect_cli
