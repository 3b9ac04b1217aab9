#pragma once

#include <rapidjson/document.h>
#include <rapidjson/filereadstream.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <utility>

/// Parsing of JSON that a server supplies. The nesting is bounded, so that no answer can exhaust the stack:
/// neither here nor in the readers that walk a document. Makes no request.
namespace lxservices::cms_interface::vantry {

/// Deepest nesting of objects and arrays that is read. An expanded folder tree, the deepest
/// answer there is, takes two levels for each folder level.
inline constexpr int maximumJsonDepth = 512;

/// Passes events on to another handler and ends the parse below maximumJsonDepth.
template <typename Handler>
class DepthLimitedHandler {
 public:
  explicit DepthLimitedHandler(Handler& handler) : handler_(handler) {}

  bool Null() { return handler_.Null(); }
  bool Bool(bool value) { return handler_.Bool(value); }
  bool Int(int value) { return handler_.Int(value); }
  bool Uint(unsigned value) { return handler_.Uint(value); }
  bool Int64(std::int64_t value) { return handler_.Int64(value); }
  bool Uint64(std::uint64_t value) { return handler_.Uint64(value); }
  bool Double(double value) { return handler_.Double(value); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool copy) {
    return handler_.RawNumber(text, length, copy);
  }
  bool String(const char* text, rapidjson::SizeType length, bool copy) {
    return handler_.String(text, length, copy);
  }
  bool Key(const char* text, rapidjson::SizeType length, bool copy) {
    return handler_.Key(text, length, copy);
  }
  bool StartObject() { return Enter() && handler_.StartObject(); }
  bool EndObject(rapidjson::SizeType members) {
    --depth_;
    return handler_.EndObject(members);
  }
  bool StartArray() { return Enter() && handler_.StartArray(); }
  bool EndArray(rapidjson::SizeType elements) {
    --depth_;
    return handler_.EndArray(elements);
  }

 private:
  bool Enter() { return ++depth_ <= maximumJsonDepth; }

  Handler& handler_;
  int depth_ = 0;
};

/// Whether nothing is left of a stream whose next byte reads as the end. Both streams give a zero byte at
/// their end, and only one that stands in the text can be taken.
template <typename Stream>
[[nodiscard]] bool IsAtEnd(Stream& stream) {
  const auto position = stream.Tell();
  stream.Take();
  return stream.Tell() == position;
}

/// Runs a SAX handler over a stream. The reader recurses once for each level of nesting, which is faster than
/// its iterative form, and the limit on the depth comes before each descent.
/// @return false for what is no JSON, for further text behind the value, for too deep a nesting, and when the
///         handler ends the parse
template <typename Stream, typename Handler>
[[nodiscard]] bool ReadJson(Stream& stream, Handler& handler) {
  rapidjson::Reader reader;
  DepthLimitedHandler<Handler> limited(handler);
  return !reader.Parse(stream, limited).IsError() && IsAtEnd(stream);
}

/// Parses a stream into a document, which is left null when that fails.
[[nodiscard]] bool ParseJson(rapidjson::FileReadStream& stream, rapidjson::Document& document);
[[nodiscard]] bool ParseJson(rapidjson::MemoryStream& stream, rapidjson::Document& document);

}  // namespace lxservices::cms_interface::vantry
