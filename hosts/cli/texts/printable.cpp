#include "hosts/cli/texts/printable.h"

#include <cstdint>
#include <cstdio>

namespace vtdirect_cli {
namespace {

struct Character {
  std::size_t length = 1;  // bytes; 1 for a byte that is no UTF-8
  char32_t value = 0;
  bool valid = false;
};

[[nodiscard]] std::uint8_t ByteAt(std::string_view text, std::size_t position) {
  return static_cast<std::uint8_t>(text[position]);
}

// Overlong forms, surrogates and values above U+10FFFF count as no UTF-8: a terminal may read them as
// something else than what was checked here.
[[nodiscard]] Character CharacterAt(std::string_view text, std::size_t position) {
  const std::uint8_t first = ByteAt(text, position);
  if (first < 0x80) return {.length = 1, .value = first, .valid = true};
  std::size_t length = 0;
  char32_t value = 0;
  char32_t smallest = 0;
  if (first >= 0xC2 && first <= 0xDF) {
    length = 2, value = first & 0x1FU, smallest = 0x80;
  } else if (first >= 0xE0 && first <= 0xEF) {
    length = 3, value = first & 0x0FU, smallest = 0x800;
  } else if (first >= 0xF0 && first <= 0xF4) {
    length = 4, value = first & 0x07U, smallest = 0x10000;
  } else {
    return {};
  }
  if (text.size() - position < length) return {};
  for (std::size_t i = 1; i < length; ++i) {
    const std::uint8_t next = ByteAt(text, position + i);
    if ((next & 0xC0U) != 0x80U) return {};
    value = (value << 6U) | (next & 0x3FU);
  }
  if (value < smallest || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return {};
  return {.length = length, .value = value, .valid = true};
}

[[nodiscard]] bool HarmsTerminal(char32_t value) {
  if (value < 0x20 || (value >= 0x7F && value <= 0x9F)) return true;
  if (value == 0x061C || value == 0x200E || value == 0x200F) return true;
  if (value >= 0x2028 && value <= 0x202E) return true;
  return value >= 0x2066 && value <= 0x2069;
}

void AppendEscaped(std::string& out, std::string_view bytes) {
  for (const char byte : bytes) {
    char escaped[5];
    std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned>(static_cast<std::uint8_t>(byte)));
    out += escaped;
  }
}

}  // namespace

std::string Printable(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const Character character = CharacterAt(text, position);
    const std::string_view bytes = text.substr(position, character.length);
    if (!character.valid || HarmsTerminal(character.value)) {
      AppendEscaped(out, bytes);
    } else {
      out += bytes;
    }
    position += character.length;
  }
  return out;
}

FirstCharacter FirstCharacterOf(std::string_view text) {
  const Character character = CharacterAt(text, 0);
  return {character.length, character.valid && !HarmsTerminal(character.value)};
}

std::string ValidUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const Character character = CharacterAt(text, position);
    if (character.valid) {
      out += text.substr(position, character.length);
    } else {
      out += "\xEF\xBF\xBD";
    }
    position += character.length;
  }
  return out;
}

std::string JsonWithoutDelete(std::string_view json) {
  std::string out;
  out.reserve(json.size());
  for (const char c : json) {
    if (c == '\x7F') {
      out += "\\u007F";
    } else {
      out += c;
    }
  }
  return out;
}

std::string QuotedForShell(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string ByteCount(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

}  // namespace vtdirect_cli
