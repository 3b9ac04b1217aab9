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

std::optional<UserCredentials> ReadBasic(std::string_view authorization) {
  const auto blank = authorization.find(' ');
  if (blank == std::string_view::npos || !EqualIgnoringCase(authorization.substr(0, blank), "basic")) {
    return std::nullopt;
  }
  authorization.remove_prefix(blank + 1);
  while (authorization.starts_with(' ')) authorization.remove_prefix(1);
  const auto text = DecodeBase64(authorization);
  if (!text) return std::nullopt;
  const auto colon = text->find(':');
  if (colon == std::string::npos || colon == 0) return std::nullopt;
  return UserCredentials{text->substr(0, colon), text->substr(colon + 1)};
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

std::optional<std::string> Authenticate(std::string_view authorization,
                                        const std::vector<UserCredentials>& users) {
  const auto given = ReadBasic(authorization);
  if (users.empty()) return given ? given->name : std::string(kOpenServerUser);
  if (!given) return std::nullopt;
  for (const UserCredentials& user : users) {
    if (user.name == given->name && user.password == given->password) return user.name;
  }
  return std::nullopt;
}

}  // namespace vantry_sim
