#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

namespace vtdirect_test {

/// A handler of RapidJSON's events that writes them down, each in a line's worth of text and apart by blanks:
/// "null", "true", "i-5", "u5", "I" and "U" for 64 bits, "d" with the bits of a double exactly, "s:" and "k:"
/// for texts and keys with their length, "{", "}" and "]" with the number of members or elements, "[".
class JsonEventLog {
 public:
  /// @param limit  the number of events after which the handler ends the parse
  explicit JsonEventLog(std::size_t limit = std::numeric_limits<std::size_t>::max()) : left_(limit) {}

  [[nodiscard]] const std::string& text() const { return text_; }

  bool Null() { return Note("null"); }
  bool Bool(bool value) { return Note(value ? "true" : "false"); }
  bool Int(int value) { return Note("i" + std::to_string(value)); }
  bool Uint(unsigned value) { return Note("u" + std::to_string(value)); }
  bool Int64(std::int64_t value) { return Note("I" + std::to_string(value)); }
  bool Uint64(std::uint64_t value) { return Note("U" + std::to_string(value)); }
  bool Double(double value) {
    char digits[64];
    std::snprintf(digits, sizeof(digits), "d%a", value);
    return Note(digits);
  }
  bool RawNumber(const char*, unsigned, bool) { return false; }
  bool String(const char* text, unsigned length, bool) { return NoteText('s', text, length); }
  bool Key(const char* text, unsigned length, bool) { return NoteText('k', text, length); }
  bool StartObject() { return Note("{"); }
  bool EndObject(unsigned members) { return Note("}" + std::to_string(members)); }
  bool StartArray() { return Note("["); }
  bool EndArray(unsigned elements) { return Note("]" + std::to_string(elements)); }

 private:
  bool NoteText(char kind, const char* text, unsigned length) {
    return Note(kind + std::to_string(length) + ":" + std::string(text, length));
  }
  bool Note(const std::string& event) {
    if (left_ == 0) return false;
    --left_;
    if (!text_.empty()) text_ += ' ';
    text_ += event;
    return true;
  }

  std::size_t left_;
  std::string text_;
};

}  // namespace vtdirect_test
