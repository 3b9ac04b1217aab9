#pragma once

#include <rapidjson/rapidjson.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "connection/json_grammar.h"

namespace lxservices::cms_interface::vantry {

/// Reads JSON of the plain kind that servers mostly send, out of memory and in a third of JsonReader's work: no
/// escapes in its texts, whole numbers that are not negative, a few levels. It takes no text that JsonReader
/// refuses, and makes the same events of those that it takes. Whether a text is plain shows on the way: for one
/// that isn't, the events so far count for nothing, and JsonReader has to read it from its first byte. Makes
/// no request.
template <typename Handler>
class PlainJson {
 public:
  /// @param text  outlives the reader, and so do the texts that it hands to the handler; no longer than a text
  ///              within it may be (longestJsonText of the settings)
  PlainJson(std::string_view text, Handler& handler)
      : begin_(text.data()), end_(begin_ + text.size()), handler_(handler) {}

  /// @return whether the text is plain, and was read to its end; false also when the handler ends the parse
  [[nodiscard]] bool Read();

 private:
  static constexpr std::size_t mostLevels = 16;

  struct Level {
    char closing = 0;
    rapidjson::SizeType values = 0;
  };

  // Each is given a place before the end and gives the one after what it has read, which keeps it in a register;
  // null once the text is not plain. The last byte ends an object or a list, so that only what closes one can
  // come to the end, and nothing else has to look for it.

  [[nodiscard]] bool EndsInContainer();
  [[nodiscard]] const char* Next(const char* at);
  [[nodiscard]] const char* Name(const char* at);
  /// A value that is no container and no text.
  [[nodiscard]] const char* Scalar(const char* at);
  [[nodiscard]] const char* Text(const char* at);
  [[nodiscard]] const char* Container(const char* at);
  [[nodiscard]] const char* Close(const char* at);
  [[nodiscard]] const char* Number(const char* at);
  template <std::size_t Size>
  [[nodiscard]] const char* Word(const char* at, const char (&word)[Size]) const;
  [[nodiscard]] const char* EndOfName(const char* at);
  [[nodiscard]] const char* EndOfOtherName(const char* at);
  [[nodiscard]] const char* EndOfText(const char* at) const;
  [[nodiscard]] static const char* SkipBlanks(const char* at);
  [[nodiscard]] static bool IsBlank(char byte);

  const char* const begin_;
  const char* end_;
  Handler& handler_;
  std::array<Level, mostLevels> levels_;
  std::size_t depth_ = 0;
};

// The whole reader in one piece: most of what it consists of takes less time than a call.
template <typename Handler>
[[gnu::flatten]] bool PlainJson<Handler>::Read() {
  if (!EndsInContainer()) return false;
  const char* at = Container(SkipBlanks(begin_));
  while (at != nullptr && at != end_ && depth_ > 0) at = Next(SkipBlanks(at));
  return at == end_ && depth_ == 0;
}

/// Leaves out the blanks after the text.
template <typename Handler>
bool PlainJson<Handler>::EndsInContainer() {
  while (end_ != begin_ && IsBlank(end_[-1])) --end_;
  return end_ != begin_ && (end_[-1] == '}' || end_[-1] == ']');
}

/// Goes on in the innermost container that is open, to its end or to the beginning of another one in it.
template <typename Handler>
const char* PlainJson<Handler>::Next(const char* at) {
  Level& level = levels_[depth_ - 1];
  if (*at == level.closing) return Close(at);
  if (level.values > 0) {
    if (*at != ',') return nullptr;
    at = SkipBlanks(at + 1);
  }
  const bool isObject = level.closing == '}';
  while (true) {
    ++level.values;
    if (isObject) at = Name(at);
    if (at == nullptr) return nullptr;
    if (*at == '{' || *at == '[') return Container(at);
    at = *at == '"' ? Text(at) : Scalar(at);
    if (at == nullptr) return nullptr;
    at = SkipBlanks(at);
    if (*at != ',') return at;
    at = SkipBlanks(at + 1);
  }
}

template <typename Handler>
const char* PlainJson<Handler>::Name(const char* at) {
  const char* const end = *at == '"' ? EndOfName(at) : nullptr;
  if (end == nullptr) return nullptr;
  at = SkipBlanks(end + 1);
  return *at == ':' ? SkipBlanks(at + 1) : nullptr;
}

/// The quote after a name, which the handler has taken. A name that it waits for is compared, and not looked
/// through for its end.
template <typename Handler>
const char* PlainJson<Handler>::EndOfName(const char* at) {
  if constexpr (requires { handler_.TakeLikelyName({}); }) {
    // No name ends where the text does.
    const std::size_t length = handler_.TakeLikelyName({at + 1, static_cast<std::size_t>(end_ - at - 1)});
    if (length > 0) return at + 1 + length;
  }
  return EndOfOtherName(at);
}

// Kept apart, so that the usual way needs few registers.
template <typename Handler>
[[gnu::noinline]] const char* PlainJson<Handler>::EndOfOtherName(const char* at) {
  const char* const end = EndOfText(at);
  if (end == nullptr) return nullptr;
  return handler_.Key(at + 1, static_cast<rapidjson::SizeType>(end - at - 1), true) ? end : nullptr;
}

template <typename Handler>
const char* PlainJson<Handler>::Scalar(const char* at) {
  switch (*at) {
    case 't':
      return handler_.Bool(true) ? Word(at, "true") : nullptr;
    case 'f':
      return handler_.Bool(false) ? Word(at, "false") : nullptr;
    case 'n':
      return handler_.Null() ? Word(at, "null") : nullptr;
    default:
      return Number(at);
  }
}

template <typename Handler>
const char* PlainJson<Handler>::Text(const char* at) {
  const char* const end = EndOfText(at);
  if (end == nullptr) return nullptr;
  const bool goesOn = handler_.String(at + 1, static_cast<rapidjson::SizeType>(end - at - 1), true);
  return goesOn ? end + 1 : nullptr;
}

template <typename Handler>
const char* PlainJson<Handler>::Container(const char* at) {
  if ((*at != '{' && *at != '[') || depth_ == levels_.size()) return nullptr;
  const bool isObject = *at == '{';
  levels_[depth_++] = {isObject ? '}' : ']'};
  return (isObject ? handler_.StartObject() : handler_.StartArray()) ? at + 1 : nullptr;
}

template <typename Handler>
const char* PlainJson<Handler>::Close(const char* at) {
  const Level level = levels_[--depth_];
  const bool goesOn =
      level.closing == '}' ? handler_.EndObject(level.values) : handler_.EndArray(level.values);
  return goesOn ? at + 1 : nullptr;
}

/// The quote after a text that begins here; null when there is none, and for a text with an escape.
template <typename Handler>
const char* PlainJson<Handler>::EndOfText(const char* at) const {
  const char* const end = json_grammar::detail::count_valid<true>(at + 1, end_);
  return end != end_ && *end == '"' ? end : nullptr;
}

// What follows a number is looked at by whoever goes on: a fraction, an exponent or a word is nothing that
// may come there.
template <typename Handler>
const char* PlainJson<Handler>::Number(const char* at) {
  constexpr std::ptrdiff_t mostDigits = std::numeric_limits<std::uint64_t>::digits10;
  const char* const begin = at;
  std::uint64_t number = 0;
  for (; *at >= '0' && *at <= '9'; ++at) {
    if (at - begin == mostDigits) return nullptr;
    number = number * 10 + static_cast<unsigned>(*at - '0');
  }
  if (at == begin || (*begin == '0' && at - begin > 1)) return nullptr;
  const bool goesOn = number > std::numeric_limits<std::uint32_t>::max()
                          ? handler_.Uint64(number)
                          : handler_.Uint(static_cast<unsigned>(number));
  return goesOn ? at : nullptr;
}

template <typename Handler>
template <std::size_t Size>
const char* PlainJson<Handler>::Word(const char* at, const char (&word)[Size]) const {
  constexpr std::size_t length = Size - 1;  // known to the compiler, which then compares without a call
  const bool isWord =
      static_cast<std::size_t>(end_ - at) >= length && std::char_traits<char>::compare(at, word, length) == 0;
  return isWord ? at + length : nullptr;
}

template <typename Handler>
bool PlainJson<Handler>::IsBlank(char byte) {
  // Few bytes of a text are that small.
  return static_cast<unsigned char>(byte) <= ' ' &&
         (byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t');
}

template <typename Handler>
const char* PlainJson<Handler>::SkipBlanks(const char* at) {
  while (IsBlank(*at)) ++at;
  return at;
}

}  // namespace lxservices::cms_interface::vantry
