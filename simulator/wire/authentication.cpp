#include "simulator/wire/authentication.h"

#include <cstdint>

namespace vantry_sim {
namespace {

int Base64Digit(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

bool EqualIgnoringCase(std::string_view left, std::string_view lower) {
  if (left.size() != lower.size()) return false;
  for (std::size_t i = 0; i < left.size(); ++i) {
    const char c = left[i] >= 'A' && left[i] <= 'Z' ? static_cast<char>(left[i] - 'A' + 'a') : left[i];
    if (c != lower[i]) return false;
  }
  return true;
}

}  // namespace

std::optional<std::string> DecodeBase64(std::string_view text) {
  while (text.ends_with('=')) text.remove_suffix(1);
  std::string out;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    const int digit = Base64Digit(c);
    if (digit < 0) return std::nullopt;
    bits = (bits << 6 | static_cast<std::uint32_t>(digit)) & 0xFFFFFF;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    out += static_cast<char>(bits >> count & 0xFF);
  }
  return out;
}

std::string EncodeBase64(std::string_view bytes) {
  constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t bits = 0;
    for (std::size_t byte = 0; byte < 3; ++byte)
      bits = bits << 8 | (i + byte < bytes.size() ? static_cast<unsigned char>(bytes[i + byte]) : 0U);
    for (std::size_t digit = 0; digit < 4; ++digit)
      out += i + digit > bytes.size() ? '=' : digits[bits >> (18 - 6 * digit) & 63];
  }
  return out;
}

std::optional<std::string_view> CredentialsOf(std::string_view authorization, std::string_view scheme) {
  const auto blank = authorization.find(' ');
  if (blank == std::string_view::npos || !EqualIgnoringCase(authorization.substr(0, blank), scheme))
    return std::nullopt;
  authorization.remove_prefix(blank + 1);
  while (authorization.starts_with(' ')) authorization.remove_prefix(1);
  return authorization;
}

std::optional<UserCredentials> ReadBasic(std::string_view authorization) {
  const auto credentials = CredentialsOf(authorization, "basic");
  if (!credentials) return std::nullopt;
  const auto text = DecodeBase64(*credentials);
  if (!text) return std::nullopt;
  const auto colon = text->find(':');
  if (colon == std::string::npos || colon == 0) return std::nullopt;
  return UserCredentials{text->substr(0, colon), text->substr(colon + 1)};
}

}  // namespace vantry_sim
