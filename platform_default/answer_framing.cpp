#include "platform_default/answer_framing.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

std::string_view ValueOf(std::string_view line) {
  std::string_view value = line.substr(line.find(':') + 1);
  const std::size_t first = value.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return value.substr(first, value.find_last_not_of(" \t\r\n") + 1 - first);
}

bool IsWord(std::string_view value, std::string_view word) {
  return std::equal(value.begin(), value.end(), word.begin(), word.end(),
                    [](char left, char right) { return ToAsciiLower(left) == right; });
}

constexpr std::string_view lengthName = "content-length";
constexpr std::string_view transferName = "transfer-encoding";

bool IsOfFraming(std::string_view name) {
  return IsWord(name, lengthName) || IsWord(name, transferName) || IsWord(name, "content-encoding");
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
  mayContinue_ = !IsOfFraming(name);
  if (mayContinue_) return true;
  return name.size() == written.size() && TakeNamed(name, ValueOf(line));
}

bool AnswerFraming::TakeNamed(std::string_view name, std::string_view value) {
  if (IsWord(name, lengthName)) return TakeLength(value);
  if (IsWord(name, transferName)) return IsWord(value, "chunked") && !std::exchange(chunked_, true);
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
