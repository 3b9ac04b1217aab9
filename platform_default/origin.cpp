#include "platform_default/origin.h"

#include <algorithm>
#include <string_view>

#include "platform/uri.h"
#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), ToAsciiLower);
  return text;
}

std::uint16_t StandardPort(std::string_view scheme) {
  return scheme == "https" ? 443 : 80;
}

/// Bytes above 126 pass: an internationalised host name is the resolver's affair.
bool IsFitHost(std::string_view host) {
  if (host.empty()) return false;
  const bool bracketed = host.front() == '[';
  if (bracketed && (host.size() < 3 || host.back() != ']')) return false;
  const std::string_view inner = bracketed ? host.substr(1, host.size() - 2) : host;
  return std::none_of(inner.begin(), inner.end(), [](char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value <= 0x20 || value == 0x7F ||
           std::string_view("\"<>\\^`{|}[]#?/@!$&'()*+,;=").find(byte) != std::string_view::npos;
  });
}

std::optional<std::uint16_t> PortFrom(std::string_view digits) {
  std::uint32_t port = 0;
  for (const char digit : digits) {
    if (!IsAsciiDigit(digit)) return std::nullopt;
    port = port * 10 + static_cast<std::uint32_t>(digit - '0');
    if (port > 65535) return std::nullopt;
  }
  if (port == 0) return std::nullopt;
  return static_cast<std::uint16_t>(port);
}

}  // namespace

std::string Origin::Text() const {
  constexpr std::size_t longestPort = 6;  // with its colon
  std::string text;
  text.reserve(scheme.size() + 3 + host.size() + longestPort);
  text.append(scheme).append("://").append(host);
  if (port != StandardPort(scheme)) text.append(":").append(std::to_string(port));
  return text;
}

std::optional<Origin> OriginOf(const std::string& url) {
  Origin origin;
  origin.scheme = Lower(du::GetURIPart(url, du::URIPart::Scheme));
  origin.host = Lower(du::GetURIPart(url, du::URIPart::Host));
  if (origin.scheme != "http" && origin.scheme != "https") return std::nullopt;
  if (!IsFitHost(origin.host)) return std::nullopt;
  const std::string port = du::GetURIPart(url, du::URIPart::Port);
  const std::optional<std::uint16_t> number = port.empty() ? StandardPort(origin.scheme) : PortFrom(port);
  if (!number) return std::nullopt;
  origin.port = *number;
  return origin;
}

}  // namespace vtdirect::platform
