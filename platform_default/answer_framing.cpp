#include "platform_default/answer_framing.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

constexpr bool IsBlank(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

std::string_view ValueOf(std::string_view line) {
  std::string_view value = line.substr(line.find(':') + 1);
  while (!value.empty() && IsBlank(value.front())) value.remove_prefix(1);
  while (!value.empty() && IsBlank(value.back())) value.remove_suffix(1);
  return value;
}

bool IsWord(std::string_view value, std::string_view word) {
  return std::equal(value.begin(), value.end(), word.begin(), word.end(),
                    [](char left, char right) { return ToAsciiLower(left) == right; });
}

enum class FramingLine { None, Length, TransferCoding, ContentCoding };

FramingLine LineOf(std::string_view name) {
  if (IsWord(name, "content-length")) return FramingLine::Length;
  if (IsWord(name, "transfer-encoding")) return FramingLine::TransferCoding;
  return IsWord(name, "content-encoding") ? FramingLine::ContentCoding : FramingLine::None;
}

/// Whether a list names one of the codings that the world knows. Some servers name a character set there.
bool NamesCoding(std::string_view list) {
  constexpr std::string_view codings[] = {"gzip",       "x-gzip",       "deflate", "br",      "compress",
                                          "x-compress", "zstd",         "dcb",     "dcz",     "exi",
                                          "aes128gcm",  "pack200-gzip", "bzip2",   "x-bzip2", "lz4",
                                          "lzma",       "xz",           "snappy",  "sdch"};
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    const std::string_view one = ValueOf(list.substr(0, std::min(list.find(';'), end)));
    for (const std::string_view coding : codings) {
      if (IsWord(one, coding)) return true;
    }
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

std::optional<std::uint64_t> LengthFrom(std::string_view digits) {
  if (digits.empty() || !std::all_of(digits.begin(), digits.end(), IsAsciiDigit)) return std::nullopt;
  std::int64_t length = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), length);
  if (error != std::errc()) return std::nullopt;
  return static_cast<std::uint64_t>(length);
}

}  // namespace

bool AnswerFraming::Take(std::string_view line) {
  if (line.starts_with(' ') || line.starts_with('\t')) return mayContinue_;
  const std::string_view written = line.substr(0, line.find(':'));
  const std::string_view name = written.substr(0, written.find_last_not_of(" \t") + 1);
  const FramingLine which = LineOf(name);
  mayContinue_ = which == FramingLine::None;
  if (mayContinue_) return true;
  if (name.size() != written.size()) return false;
  const std::string_view value = ValueOf(line);
  if (which == FramingLine::Length) return TakeLength(value);
  if (which == FramingLine::TransferCoding) return IsWord(value, "chunked") && !std::exchange(chunked_, true);
  coded_ = coded_ || NamesCoding(value);
  return true;
}

bool AnswerFraming::TakeLength(std::string_view value) {
  const std::optional<std::uint64_t> length = LengthFrom(value);
  if (!length || (length_ && *length_ != *length)) return false;
  length_ = length;
  return true;
}

}  // namespace vtdirect::platform
