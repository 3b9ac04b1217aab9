#include "platform_default/request_target.h"

#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

bool IsEscape(std::string_view uri, std::size_t at) {
  return uri.size() - at > 2 && HexadecimalValue(uri[at + 1]) >= 0 && HexadecimalValue(uri[at + 2]) >= 0;
}

bool FitsRequestLine(std::string_view uri, std::size_t at) {
  const auto value = static_cast<unsigned char>(uri[at]);
  if (value <= 0x20 || value >= 0x7F) return false;
  if (uri[at] == '%') return IsEscape(uri, at);
  return std::string_view("\"<>\\^`{|}#").find(uri[at]) == std::string_view::npos;
}

}  // namespace

std::string RequestTarget(std::string_view uri) {
  std::string target;
  target.reserve(uri.size() + 1);
  if (uri.empty() || uri.front() != '/') target += '/';
  for (std::size_t at = 0; at < uri.size(); ++at) {
    if (FitsRequestLine(uri, at)) {
      target += uri[at];
    } else {
      AppendPercentEscaped(uri[at], &target);
    }
  }
  return target;
}

}  // namespace vtdirect::platform
