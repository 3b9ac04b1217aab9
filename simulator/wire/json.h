#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vantry_sim {

/// Writes one JSON text from front to back. Bytes that are no valid UTF-8 are written as U+FFFD, so that a
/// name from a hostile request cannot spoil an answer or a log line.
class JsonText {
 public:
  JsonText();
  JsonText(const JsonText&) = delete;
  JsonText& operator=(const JsonText&) = delete;
  ~JsonText();

  JsonText& StartObject();
  JsonText& EndObject();
  JsonText& StartArray();
  JsonText& EndArray();
  JsonText& Key(std::string_view name);
  JsonText& String(std::string_view value);
  JsonText& Number(std::int64_t value);
  JsonText& Boolean(bool value);
  JsonText& Null();
  /// A number as it is written. @param text a JSON number
  JsonText& RawNumber(std::string_view text);

  JsonText& Member(std::string_view name, std::string_view value) { return Key(name).String(value); }
  JsonText& Member(std::string_view name, const char* value) { return Key(name).String(value); }
  JsonText& Member(std::string_view name, const std::string& value) { return Key(name).String(value); }
  JsonText& Member(std::string_view name, std::int64_t value) { return Key(name).Number(value); }
  JsonText& Member(std::string_view name, bool value) { return Key(name).Boolean(value); }

  /// A whole JSON text as a value.
  JsonText& Raw(std::string_view text);

  /// The text written so far; the writer is used up.
  std::string Take();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace vantry_sim
