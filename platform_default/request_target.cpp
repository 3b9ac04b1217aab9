#include "platform_default/request_target.h"

#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

bool IsEscape(std::string_view uri, std::size_t at) {
  return uri.size() - at > 2 && HexadecimalValue(uri[at + 1]) >= 0 && HexadecimalValue(uri[at + 2]) >= 0;
}

constexpr bool FitsAnywhere(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value > 0x20 && value < 0x7F &&
         std::string_view("\"<>\\^`{|}#%").find(byte) == std::string_view::npos;
}

constexpr ByteTable fitting = TableOf(FitsAnywhere);

std::size_t EndOfFitting(std::string_view uri, std::size_t at) {
  for (; at < uri.size(); ++at) {
    if (!IsIn(fitting, uri[at]) && (uri[at] != '%' || !IsEscape(uri, at))) break;
  }
  return at;
}

}  // namespace

std::string RequestTarget(std::string_view uri) {
  std::string target;
  target.reserve(uri.size() + 1);
  AppendRequestTarget(uri, &target);
  return target;
}

void AppendRequestTarget(std::string_view uri, std::string* text) {
  if (uri.empty() || uri.front() != '/') *text += '/';
  for (std::size_t at = 0; at < uri.size(); ++at) {
    const std::size_t begin = at;
    at = EndOfFitting(uri, at);
    text->append(uri, begin, at - begin);
    if (at < uri.size()) AppendPercentEscaped(uri[at], text);
  }
}

}  // namespace vtdirect::platform
