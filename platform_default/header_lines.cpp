#include "platform_default/header_lines.h"

#include <algorithm>
#include <array>

#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

constexpr std::size_t largestHeaderText = 256 * 1024;

/// What the transport writes itself. A second value would let the server and a proxy on the way disagree
/// about where the request ends or whom it is for.
constexpr std::array<std::string_view, 9> transportHeaders{
    "Connection",        "Content-Length", "Expect",          "Host", "Keep-Alive", "TE",
    "Transfer-Encoding", "Upgrade",        "Proxy-Connection"};

constexpr ByteTable tokenBytes = TableOf([](char byte) {
  return IsAsciiLetter(byte) || IsAsciiDigit(byte) ||
         std::string_view("!#$%&'*+-.^_`|~").find(byte) != std::string_view::npos;
});

constexpr ByteTable valueBytes = TableOf([](char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return byte == '\t' || (value >= 0x20 && value != 0x7F);
});

bool HoldsOnly(const ByteTable& table, std::string_view text) {
  return std::all_of(text.begin(), text.end(), [&table](char byte) { return IsIn(table, byte); });
}

bool ContainsWord(std::string_view text, std::string_view lowerWord) {
  // Mostly it is written so.
  if (text.find(lowerWord) != std::string_view::npos) return true;
  const auto found = std::search(text.begin(), text.end(), lowerWord.begin(), lowerWord.end(),
                                 [](char byte, char wanted) { return ToAsciiLower(byte) == wanted; });
  return found != text.end();
}

bool IsFitLine(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon == 0) return false;
  const std::string_view name = line.substr(0, colon);
  const std::string_view value = line.substr(colon + 1);
  if (!HoldsOnly(tokenBytes, name) || !HoldsOnly(valueBytes, value)) return false;
  return std::none_of(transportHeaders.begin(), transportHeaders.end(),
                      [line](std::string_view reserved) { return HasHeaderName(line, reserved); });
}

}  // namespace

bool AppendHeaderLines(std::string_view text, std::vector<std::string_view>* lines) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 2, text.size()));
    if (line.empty()) continue;
    if (!IsFitLine(line)) return false;
    lines->push_back(line);
  }
  return true;
}

du::http::ErrorCode ReadHeaderText(du::http::FileSource* source, std::string* text) {
  using du::http::ErrorCode;
  if (source == nullptr) return ErrorCode::Done;
  std::array<std::uint8_t, 4096> piece;
  while (true) {
    std::size_t count = 0;
    const ErrorCode result = source->Read(piece.data(), piece.size(), &count);
    if (result != ErrorCode::Done || count == 0) return result;
    if (count > piece.size() || text->size() + count > largestHeaderText) return ErrorCode::ProtocolFailure;
    text->append(reinterpret_cast<const char*>(piece.data()), count);
  }
}

bool BeginsWithName(std::string_view text, std::string_view name) {
  // Mostly it is written as it is everywhere.
  return text.starts_with(name) ||
         std::equal(name.begin(), name.end(), text.begin(),
                    [](char left, char right) { return ToAsciiLower(left) == ToAsciiLower(right); });
}

bool ContainsHeader(std::span<const std::string_view> lines, std::string_view name) {
  return std::any_of(lines.begin(), lines.end(),
                     [name](std::string_view line) { return HasHeaderName(line, name); });
}

bool AcceptsJsonOrXml(std::span<const std::string_view> lines) {
  return std::any_of(lines.begin(), lines.end(), [](std::string_view line) {
    return HasHeaderName(line, "Accept") && (ContainsWord(line, "json") || ContainsWord(line, "xml"));
  });
}

}  // namespace vtdirect::platform
