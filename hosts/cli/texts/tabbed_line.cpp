#include "hosts/cli/texts/tabbed_line.h"

#include <charconv>
#include <cstdio>

namespace vtdirect_cli {
namespace {

[[nodiscard]] bool NeedsEscape(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F || c == '\\';
}

[[nodiscard]] std::string Escaped(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (!NeedsEscape(c)) {
      out += c;
      continue;
    }
    char escaped[5];
    std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    out += escaped;
  }
  return out;
}

[[nodiscard]] std::optional<char> EscapedByte(std::string_view text) {
  if (text.size() < 4 || text[1] != 'x') return std::nullopt;
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data() + 2, text.data() + 4, value, 16);
  if (error != std::errc() || end != text.data() + 4) return std::nullopt;
  return static_cast<char>(value);
}

[[nodiscard]] std::optional<std::string> Unescaped(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    if (text.front() != '\\') {
      if (NeedsEscape(text.front())) return std::nullopt;
      out += text.front();
      text.remove_prefix(1);
      continue;
    }
    const auto byte = EscapedByte(text);
    if (!byte) return std::nullopt;
    out += *byte;
    text.remove_prefix(4);
  }
  return out;
}

[[nodiscard]] std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

std::string LineOfFields(const std::vector<std::string>& fields) {
  std::string line;
  for (std::size_t i = 0; i < fields.size(); ++i) line += (i == 0 ? "" : "\t") + Escaped(fields[i]);
  return line;
}

std::optional<std::vector<std::string>> FieldsOfLine(std::string_view line) {
  std::vector<std::string> fields;
  for (const std::string_view part : Split(line, '\t')) {
    const auto unescaped = Unescaped(part);
    if (!unescaped) return std::nullopt;
    fields.push_back(*unescaped);
  }
  return fields;
}

}  // namespace vtdirect_cli
