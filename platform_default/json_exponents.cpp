#include "platform_default/json_exponents.h"

#include <cstddef>

#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

constexpr std::size_t keptDigits = 9;

// The place after a text whose quote is at `at`, or the end.
std::size_t BehindText(std::string_view json, std::size_t at) {
  for (++at; at < json.size() && json[at] != '"'; ++at) {
    if (json[at] == '\\') ++at;
  }
  return at + 1;
}

// The end of the digits that begin at `at`.
std::size_t BehindDigits(std::string_view json, std::size_t at) {
  while (at < json.size() && IsAsciiDigit(json[at])) ++at;
  return at;
}

}  // namespace

std::string ShortenJsonExponents(std::string_view json) {
  std::string shortened;
  std::size_t copied = 0;
  for (std::size_t at = 0; at < json.size();) {
    if (json[at] == '"') {
      at = BehindText(json, at);
      continue;
    }
    const bool isExponent = json[at] == 'e' || json[at] == 'E';
    if (++at >= json.size() || !isExponent) continue;
    if (json[at] == '+' || json[at] == '-') ++at;
    const std::size_t end = BehindDigits(json, at);
    while (at < end && json[at] == '0') ++at;
    if (end - at > keptDigits) {
      shortened.append(json.substr(copied, at + keptDigits - copied));
      copied = end;
    }
    at = end;
  }
  return shortened.append(json.substr(copied));
}

}  // namespace vtdirect::platform
