#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace lxservices::cms_interface {

namespace short_text {

template <typename Word>
[[nodiscard]] inline bool IsSameAt(const char* left, const char* right, std::size_t at) {
  Word leftWord;
  Word rightWord;
  std::memcpy(&leftWord, left + at, sizeof(Word));
  std::memcpy(&rightWord, right + at, sizeof(Word));
  return leftWord == rightWord;
}

// The last word overlaps the one before it where the size is no multiple of a word's.
template <typename Word>
[[nodiscard]] inline bool IsSame(const char* left, const char* right, std::size_t size) {
  for (std::size_t at = 0; at + sizeof(Word) < size; at += sizeof(Word)) {
    if (!IsSameAt<Word>(left, right, at)) return false;
  }
  return IsSameAt<Word>(left, right, size - sizeof(Word));
}

}  // namespace short_text

/// Whether `text` begins with `name`: for names of some bytes, of which many are compared one after the other.
/// It makes no call, which would take longer than the comparison itself. Pure.
/// @param text  at least as long as the name
[[nodiscard]] inline bool IsAlike(const char* text, std::string_view name) {
  if (name.size() >= sizeof(std::uint64_t)) {
    return short_text::IsSame<std::uint64_t>(text, name.data(), name.size());
  }
  if (name.size() >= sizeof(std::uint16_t)) {
    return short_text::IsSame<std::uint16_t>(text, name.data(), name.size());
  }
  return name.empty() || text[0] == name[0];
}

}  // namespace lxservices::cms_interface
