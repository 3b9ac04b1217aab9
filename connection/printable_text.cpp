#include "connection/printable_text.h"

#include <algorithm>
#include <cstdint>

namespace lxservices::cms_interface::vantry {
namespace {

struct Character {
  std::uint32_t code = 0;
  std::size_t length = 0;  ///< 0 for what is no character
};

std::size_t LengthByFirst(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return 2;
  if (first >= 0xE0 && first <= 0xEF) return 3;
  if (first >= 0xF0 && first <= 0xF4) return 4;
  return 0;
}

// The number of bytes of the first character that are there and may belong to it.
std::size_t BytesThere(std::string_view text, std::size_t length) {
  std::size_t count = 1;
  while (count < length && count < text.size() && (static_cast<unsigned char>(text[count]) & 0xC0) == 0x80) {
    ++count;
  }
  return count;
}

Character FirstOf(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = LengthByFirst(first);
  if (length == 0 || BytesThere(text, length) < length) return {};
  if (length == 1) return {first, 1};
  std::uint32_t code = first & (0xFFU >> (length + 1));
  for (std::size_t index = 1; index < length; ++index) {
    code = (code << 6) | (static_cast<unsigned char>(text[index]) & 0x3FU);
  }
  // Written longer than need be, a half of a pair, or beyond the last character.
  const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  if (isOverlong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF) return {};
  return {code, length};
}

bool IsHarmful(std::uint32_t code) {
  if (code < 0x20 || (code >= 0x7F && code <= 0x9F)) return true;
  // Zero width and directions; line and paragraph ends, embeddings; isolates; the byte order mark.
  return (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2060 && code <= 0x2069) || code == 0xFEFF || code == 0x061C;
}

bool IsCutCharacter(std::string_view text) {
  const std::size_t length = LengthByFirst(static_cast<unsigned char>(text.front()));
  return length > text.size() && BytesThere(text, length) == text.size();
}

}  // namespace

std::string PrintableText(std::string_view text, std::size_t longest) {
  text = text.substr(0, longest);
  std::string shown;
  while (!text.empty()) {
    const Character character = FirstOf(text);
    if (character.length == 0 && IsCutCharacter(text)) break;
    const std::size_t length = std::max<std::size_t>(character.length, 1);
    if (character.length == 0) {
      shown += '?';
    } else if (IsHarmful(character.code)) {
      shown += ' ';
    } else {
      shown += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return shown;
}

}  // namespace lxservices::cms_interface::vantry
