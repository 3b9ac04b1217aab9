#include "connection/json_parsing.h"

#include <rapidjson/reader.h>

#include <cstdint>
#include <functional>

#include "base/settings.h"
#include "connection/document_builder.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Hands all events on to a document, and has it copy only texts that are not part of what is read: those with
// escapes are put together elsewhere, and are gone after the event.
class InPlaceHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, InPlaceHandler> {
 public:
  InPlaceHandler(std::string_view text, DocumentBuilder& document) : text_(text), document_(document) {}

  bool Null() { return document_.Null(); }
  bool Bool(bool value) { return document_.Bool(value); }
  bool Int(int value) { return document_.Int(value); }
  bool Uint(unsigned value) { return document_.Uint(value); }
  bool Int64(std::int64_t value) { return document_.Int64(value); }
  bool Uint64(std::uint64_t value) { return document_.Uint64(value); }
  bool Double(double value) { return document_.Double(value); }
  bool String(const char* text, rapidjson::SizeType length, bool) {
    return document_.String(text, length, !IsPart(text, length));
  }
  bool Key(const char* text, rapidjson::SizeType length, bool) {
    return document_.Key(text, length, !IsPart(text, length));
  }
  bool StartObject() { return document_.StartObject(); }
  bool EndObject(rapidjson::SizeType members) { return document_.EndObject(members); }
  bool StartArray() { return document_.StartArray(); }
  bool EndArray(rapidjson::SizeType elements) { return document_.EndArray(elements); }

 private:
  [[nodiscard]] bool IsPart(const char* text, std::size_t length) const {
    const std::less_equal<const char*> before;
    return before(text_.data(), text) && before(text + length, text_.data() + text_.size());
  }

  const std::string_view text_;
  DocumentBuilder& document_;
};

bool IsWithinBound(std::string_view text) {
  return text.size() <= CurrentSettings()->largestJson;
}

// `read` makes the events of a document.
template <typename Read>
bool Fill(rapidjson::Document& document, Read read) {
  bool parsed = false;
  auto generate = [&](rapidjson::Document& handler) {
    DocumentBuilder builder(handler);
    parsed = read(builder);
    return parsed;
  };
  document.SetNull();
  document.Populate(generate);
  return parsed;
}

}  // namespace

bool ParseJson(const JsonPieces& next, rapidjson::Document& document) {
  std::uint64_t room = CurrentSettings()->largestJson;
  bool isTooLong = false;
  const JsonPieces bounded = [&]() -> std::string_view {
    const std::string_view piece = next();
    isTooLong = isTooLong || piece.size() > room;
    if (isTooLong) return {};
    room -= piece.size();
    return piece;
  };
  const auto read = [&bounded](DocumentBuilder& builder) { return ReadJson(bounded, builder); };
  if (Fill(document, read) && !isTooLong) return true;
  document.SetNull();
  return false;
}

bool ParseJson(std::string_view text, rapidjson::Document& document) {
  const auto read = [text](DocumentBuilder& builder) { return ReadJson(text, builder); };
  return IsWithinBound(text) && Fill(document, read);
}

bool ParseJsonInPlace(std::string_view text, rapidjson::Document& document) {
  const auto read = [text](DocumentBuilder& builder) {
    InPlaceHandler inPlace(text, builder);
    return ReadJson(text, inPlace);
  };
  return IsWithinBound(text) && Fill(document, read);
}

}  // namespace lxservices::cms_interface::vantry
