#pragma once

#include <rapidjson/document.h>

#include <cstddef>
#include <cstdint>

namespace lxservices::cms_interface::vantry {

/// Hands the events of JSON to a document as long as there is memory for it. RapidJSON takes what it gets for
/// memory without a look, and a process with a limit on its memory would crash. So from time to time this asks
/// for more than the document may need until it asks again, and ends the parse when that can't be had.
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
    taken_ += 2 * sizeof(rapidjson::Value) + textLength;
    return taken_ < nextLook_ || Look();
  }
  [[nodiscard]] bool Look();

  rapidjson::Document& document_;
  std::size_t taken_ = 0;  ///< at most, by what is in the document
  std::size_t nextLook_ = std::size_t{4} << 20;
};

}  // namespace lxservices::cms_interface::vantry
