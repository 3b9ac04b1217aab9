#include "hosts/cli/translation/utf8_reading.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace vtdirect_cli {
namespace {

/// Longer than any declaration.
constexpr std::size_t beginningSize = 1024;
constexpr std::size_t pieceSize = 16 * 1024;
constexpr char noUtf8 = '\xFF';

[[nodiscard]] bool IsNameByte(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '_' ||
         c == '-';
}

[[nodiscard]] bool IsKnownToTheParser(const std::string& encoding) {
  for (const char* known : {"UTF-8", "UTF-16", "ISO-8859-1", "US-ASCII"}) {
    if (strcasecmp(encoding.c_str(), known) == 0) return true;
  }
  return false;
}

/// Whether a file begins with the mark that tells in which form of Unicode it is.
[[nodiscard]] bool IsMarked(std::string_view beginning) {
  using namespace std::string_view_literals;
  return beginning.starts_with("\xFF\xFE") || beginning.starts_with("\xFE\xFF") ||
         beginning.starts_with("\0\0\xFE\xFF"sv) || beginning.starts_with("\xEF\xBB\xBF");
}

/// What is ASCII in a text of any form of Unicode.
[[nodiscard]] std::string AsciiOf(std::string_view text) {
  std::string ascii;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte != 0 && byte < 0x80) ascii += c;
  }
  return ascii;
}

[[nodiscard]] std::string_view WithoutBlanksInFront(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

}  // namespace

std::string DeclaredEncoding(std::string_view beginning) {
  constexpr std::string_view encodingName = "encoding";
  if (!beginning.starts_with("<?xml")) return {};
  std::string_view rest = beginning.substr(0, beginning.find("?>"));
  const std::size_t name = rest.find(encodingName);
  if (name == std::string_view::npos) return {};
  rest = WithoutBlanksInFront(rest.substr(name + encodingName.size()));
  if (!rest.starts_with('=')) return {};
  rest = WithoutBlanksInFront(rest.substr(1));
  if (!rest.starts_with('"') && !rest.starts_with('\'')) return {};
  const std::string_view value = rest.substr(1, std::min(rest.find(rest.front(), 1), rest.size()) - 1);
  return std::all_of(value.begin(), value.end(), IsNameByte) ? std::string(value) : std::string();
}

Utf8Reading::~Utf8Reading() {
  if (converts()) iconv_close(converter_);
}

bool Utf8Reading::Begin() {
  while (!ended_ && raw_.size() < beginningSize && AsciiOf(raw_).find("?>") == std::string::npos) {
    std::array<char, beginningSize> piece;
    const std::ptrdiff_t count = read_(piece.data(), piece.size());
    if (count < 0) return false;
    raw_.append(piece.data(), static_cast<std::size_t>(count));
    ended_ = count == 0;
  }
  const std::string encoding = DeclaredEncoding(IsMarked(raw_) ? AsciiOf(raw_) : raw_);
  if (!encoding.empty() && !IsKnownToTheParser(encoding)) converter_ = iconv_open("UTF-8", encoding.c_str());
  return true;
}

std::ptrdiff_t Utf8Reading::Read(char* buffer, std::size_t size) {
  if (!converts()) return ReadRaw(buffer, size);
  while (converted_.empty()) {
    if (ended_ && raw_.empty()) return 0;
    if (!ConvertMore()) return -1;
  }
  const std::size_t count = std::min(size, converted_.size());
  converted_.copy(buffer, count);
  converted_.erase(0, count);
  return static_cast<std::ptrdiff_t>(count);
}

std::ptrdiff_t Utf8Reading::ReadRaw(char* buffer, std::size_t size) {
  if (raw_.empty()) return ended_ ? 0 : read_(buffer, size);
  const std::size_t count = std::min(size, raw_.size());
  raw_.copy(buffer, count);
  raw_.erase(0, count);
  return static_cast<std::ptrdiff_t>(count);
}

bool Utf8Reading::ConvertMore() {
  if (!ended_) {
    std::array<char, pieceSize> piece;
    const std::ptrdiff_t count = read_(piece.data(), piece.size());
    if (count < 0) return false;
    raw_.append(piece.data(), static_cast<std::size_t>(count));
    ended_ = count == 0;
  }
  Convert();
  return true;
}

void Utf8Reading::Convert() {
  // Some encodings have characters that become several.
  std::string out(8 * raw_.size() + 64, '\0');
  char* from = raw_.data();
  char* to = out.data();
  std::size_t left = raw_.size();
  std::size_t room = out.size();
  const bool failed = iconv(converter_, &from, &left, &to, &room) == static_cast<std::size_t>(-1);
  const bool isIncomplete = failed && errno == EINVAL;
  // What some encodings hold back until they know what follows.
  if (ended_ && !failed) iconv(converter_, nullptr, nullptr, &to, &room);
  converted_.append(out.data(), out.size() - room);
  raw_.erase(0, raw_.size() - left);
  if (!failed || (isIncomplete && !ended_)) return;
  converted_ += noUtf8;
  raw_.clear();
  ended_ = true;
}

}  // namespace vtdirect_cli
