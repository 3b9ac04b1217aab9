#include "simulator/wire/utf8.h"

namespace vantry_sim {

std::size_t Utf8Length(std::string_view text) {
  if (text.empty()) return 0;
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const auto follows = [&](std::size_t i, unsigned low, unsigned high) {
    return i < text.size() && byte(i) >= low && byte(i) <= high;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return follows(1, 0x80, 0xBF) ? 2 : 0;
  if (first >= 0xE0 && first <= 0xEF) {
    const unsigned low = first == 0xE0 ? 0xA0 : 0x80;
    const unsigned high = first == 0xED ? 0x9F : 0xBF;
    return follows(1, low, high) && follows(2, 0x80, 0xBF) ? 3 : 0;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    const unsigned low = first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xF4 ? 0x8F : 0xBF;
    return follows(1, low, high) && follows(2, 0x80, 0xBF) && follows(3, 0x80, 0xBF) ? 4 : 0;
  }
  return 0;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = Utf8Length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string ValidUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = Utf8Length(text);
    out += length == 0 ? std::string_view("\xEF\xBF\xBD") : text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return out;
}

void AppendUtf8(std::string& text, std::uint32_t code) {
  const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (code >> shift & 0x3F)); };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | code >> 6);
    tail(0);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0 | code >> 12);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | code >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace vantry_sim
