#pragma once

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform_default/json_exponents.h"

namespace vtdirect_test {

/// Ends a parse below a number of levels, and passes everything else on to a handler.
template <typename Handler>
class DepthLimit {
 public:
  DepthLimit(Handler& handler, std::size_t levels) : handler_(handler), levels_(levels) {}

  bool Null() { return handler_.Null(); }
  bool Bool(bool value) { return handler_.Bool(value); }
  bool Int(int value) { return handler_.Int(value); }
  bool Uint(unsigned value) { return handler_.Uint(value); }
  bool Int64(std::int64_t value) { return handler_.Int64(value); }
  bool Uint64(std::uint64_t value) { return handler_.Uint64(value); }
  bool Double(double value) { return handler_.Double(value); }
  bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }
  bool String(const char* text, rapidjson::SizeType length, bool copy) {
    return handler_.String(text, length, copy);
  }
  bool Key(const char* text, rapidjson::SizeType length, bool copy) {
    return handler_.Key(text, length, copy);
  }
  bool StartObject() { return ++depth_ <= levels_ && handler_.StartObject(); }
  bool EndObject(rapidjson::SizeType members) {
    --depth_;
    return handler_.EndObject(members);
  }
  bool StartArray() { return ++depth_ <= levels_ && handler_.StartArray(); }
  bool EndArray(rapidjson::SizeType elements) {
    --depth_;
    return handler_.EndArray(elements);
  }

 private:
  Handler& handler_;
  std::size_t levels_;
  std::size_t depth_ = 0;
};

/// Reads JSON by RapidJSON's own reader, the measure of what the library's reader takes for JSON and of the
/// events that it makes. Only exponents that would crash it are shortened.
/// @return whether the text is one value, white space around it aside, read to its end
template <typename Handler>
bool ReadByRapidJson(std::string_view text, Handler& handler, std::size_t levels) {
  const std::string harmless = vtdirect::platform::ShortenJsonExponents(text);
  rapidjson::MemoryStream stream(harmless.data(), harmless.size());
  DepthLimit<Handler> limited(handler, levels);
  rapidjson::Reader reader;
  // A zero byte reads as the end, and is none when something of the text is left.
  return !reader.Parse(stream, limited).IsError() && stream.Tell() == harmless.size();
}

}  // namespace vtdirect_test
