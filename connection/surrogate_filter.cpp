#include "connection/surrogate_filter.h"

#include <algorithm>

namespace lxservices::cms_interface::vantry {
namespace {

constexpr std::size_t escapeLength = 6;

// What an escape is, as far as this filter must know.
struct Escape {
  std::size_t length = 0;  ///< bytes to go past; 0 when the text ends before that can be told
  bool isLoneLow = false;
};

bool IsOneOf(char byte, std::string_view bytes) {
  return bytes.find(byte) != std::string_view::npos;
}

// The text begins with a backslash. What is no escape at all is left to the parser, which refuses it.
Escape Judge(std::string_view text) {
  constexpr std::string_view beginning = "\\u";
  if (text.size() >= 2 && text[1] != 'u') return {2};
  if (text.size() > 2 && !IsOneOf(text[2], "dD")) return {2};
  if (text.size() > 3) {
    // The next escape belongs to a high surrogate: either it is the low one, or the parser refuses both.
    if (IsOneOf(text[3], "89abAB")) return {2 * escapeLength};
    if (!IsOneOf(text[3], "cdefCDEF")) return {2};
  }
  for (std::size_t index = beginning.size() + 2; index < escapeLength; ++index) {
    if (text.size() <= index) return {};
    if (!IsOneOf(text[index], "0123456789abcdefABCDEF")) return {2};
  }
  return {escapeLength, true};
}

unsigned HexDigit(char byte) {
  if (byte <= '9') return static_cast<unsigned>(byte - '0');
  return static_cast<unsigned>((byte | 0x20) - 'a') + 10;
}

void AppendSurrogate(std::string_view escape, std::string& text) {
  const unsigned code = 0xD000 | HexDigit(escape[3]) << 8 | HexDigit(escape[4]) << 4 | HexDigit(escape[5]);
  text.push_back(static_cast<char>(0xE0 | code >> 12));
  text.push_back(static_cast<char>(0x80 | (code >> 6 & 0x3F)));
  text.push_back(static_cast<char>(0x80 | (code & 0x3F)));
}

}  // namespace

std::string_view SurrogateFilter::Pass(std::string_view piece) {
  if (!heldBack_.empty()) {
    joined_.assign(heldBack_).append(piece);
    heldBack_.clear();
    piece = joined_;
  }
  rewritten_.clear();
  std::size_t copied = 0;
  std::size_t at = judged_;
  while (at < piece.size()) {
    at = std::min(piece.find('\\', at), piece.size());
    if (at == piece.size()) break;
    const Escape escape = Judge(piece.substr(at));
    if (escape.length == 0) {
      heldBack_ = piece.substr(at);
      piece = piece.substr(0, at);
      break;
    }
    if (escape.isLoneLow) {
      rewritten_.append(piece.substr(copied, at - copied));
      AppendSurrogate(piece.substr(at), rewritten_);
      copied = at + escape.length;
    }
    at += escape.length;
  }
  judged_ = at - std::min(at, piece.size());
  if (copied == 0) return piece;
  return rewritten_.append(piece.substr(copied));
}

}  // namespace lxservices::cms_interface::vantry
