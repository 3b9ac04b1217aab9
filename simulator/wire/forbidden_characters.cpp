#include "simulator/wire/forbidden_characters.h"

#include <optional>

#include "simulator/wire/uri.h"

namespace vantry_sim {
namespace {

constexpr std::string_view forbidden = "|\\/<>:\"?*%";

}  // namespace

std::string EscapeForbidden(std::string_view name) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string out;
  for (const char c : name) {
    if (forbidden.find(c) == std::string_view::npos) {
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

std::string UnescapeForbidden(std::string_view name) {
  std::string out;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto decoded = name[i] == '%' ? PercentDecode(name.substr(i, 3)) : std::nullopt;
    const bool undone =
        decoded && decoded->size() == 1 && forbidden.find(decoded->front()) != std::string_view::npos;
    out += undone ? decoded->front() : name[i];
    if (undone) i += 2;
  }
  return out;
}

}  // namespace vantry_sim
