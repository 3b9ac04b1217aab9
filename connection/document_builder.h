#pragma once

#include <rapidjson/document.h>

#include <cstddef>
#include <cstdint>

#include "connection/memory_watch.h"

namespace lxservices::cms_interface::vantry {

/// Hands the events of JSON to a document as long as there is memory for it, and ends the parse when there is
/// none left.
class DocumentBuilder {
 public:
  /// The document must outlive the builder.
  explicit DocumentBuilder(rapidjson::Document& document) : document_(document) {}

  bool Null() { return HasRoom(0) && document_.Null(); }
  bool Bool(bool value) { return HasRoom(0) && document_.Bool(value); }
  bool Int(int value) { return HasRoom(0) && document_.Int(value); }
  bool Uint(unsigned value) { return HasRoom(0) && document_.Uint(value); }
  bool Int64(std::int64_t value) { return HasRoom(0) && document_.Int64(value); }
  bool Uint64(std::uint64_t value) { return HasRoom(0) && document_.Uint64(value); }
  bool Double(double value) { return HasRoom(0) && document_.Double(value); }
  bool String(const char* text, rapidjson::SizeType length, bool copy) {
    return HasRoom(length) && document_.String(text, length, copy);
  }
  bool Key(const char* text, rapidjson::SizeType length, bool copy) {
    return HasRoom(length) && document_.Key(text, length, copy);
  }
  bool StartObject() { return HasRoom(0) && document_.StartObject(); }
  bool StartArray() { return HasRoom(0) && document_.StartArray(); }
  bool EndObject(rapidjson::SizeType count) { return document_.EndObject(count); }
  bool EndArray(rapidjson::SizeType count) { return document_.EndArray(count); }

 private:
  /// Whether there is memory for one more value with a text of this length.
  [[nodiscard]] bool HasRoom(std::size_t textLength) {
    // It is kept on a stack first, and later in the array or object that it belongs to.
    return memory_.HasRoomFor(2 * sizeof(rapidjson::Value) + textLength);
  }

  rapidjson::Document& document_;
  MemoryWatch memory_;
};

}  // namespace lxservices::cms_interface::vantry
