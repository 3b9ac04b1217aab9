#include "simulator/wire/uri.h"

namespace vantry_sim {
namespace {

int HexadecimalDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool IsUnreserved(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
         c == '_' || c == '~';
}

}  // namespace

TargetParts SplitTarget(std::string_view target) {
  const auto question = target.find('?');
  if (question == std::string_view::npos) return {target, {}};
  return {target.substr(0, question), target.substr(question + 1)};
}

std::optional<std::string> PercentDecode(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      out += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return std::nullopt;
    const int high = HexadecimalDigit(text[i + 1]);
    const int low = HexadecimalDigit(text[i + 2]);
    if (high < 0 || low < 0 || high + low == 0) return std::nullopt;
    out += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return out;
}

std::string PercentEncode(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string out;
  for (const char c : text) {
    if (IsUnreserved(c)) {
      out += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    out += '%';
    out += digits[byte >> 4];
    out += digits[byte & 15];
  }
  return out;
}

std::optional<QueryParameters> ParseQuery(std::string_view query) {
  QueryParameters parameters;
  while (!query.empty()) {
    const auto end = query.find('&');
    const std::string_view part = query.substr(0, end);
    query.remove_prefix(end == std::string_view::npos ? query.size() : end + 1);
    if (part.empty()) continue;
    const auto equals = part.find('=');
    auto name = PercentDecode(part.substr(0, equals));
    auto value =
        PercentDecode(equals == std::string_view::npos ? std::string_view() : part.substr(equals + 1));
    if (!name || !value) return std::nullopt;
    parameters.emplace_back(std::move(*name), std::move(*value));
  }
  return parameters;
}

}  // namespace vantry_sim
