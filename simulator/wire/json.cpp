#include "simulator/wire/json.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace vantry_sim {
namespace {

/// The length of the well-formed UTF-8 character at the head of the text; 0 for anything else.
std::size_t CharacterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const auto follows = [&](std::size_t i, unsigned low, unsigned high) {
    return i < text.size() && byte(i) >= low && byte(i) <= high;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return follows(1, 0x80, 0xBF) ? 2 : 0;
  if (first >= 0xE0 && first <= 0xEF) {
    const unsigned low = first == 0xE0 ? 0xA0 : 0x80;
    const unsigned high = first == 0xED ? 0x9F : 0xBF;
    return follows(1, low, high) && follows(2, 0x80, 0xBF) ? 3 : 0;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    const unsigned low = first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xF4 ? 0x8F : 0xBF;
    return follows(1, low, high) && follows(2, 0x80, 0xBF) && follows(3, 0x80, 0xBF) ? 4 : 0;
  }
  return 0;
}

std::string ValidUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    out += length == 0 ? std::string_view("\xEF\xBF\xBD") : text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return out;
}

}  // namespace

struct JsonText::State {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
};

JsonText::JsonText() : state_(std::make_unique<State>()) {}
JsonText::~JsonText() = default;

JsonText& JsonText::StartObject() {
  state_->writer.StartObject();
  return *this;
}

JsonText& JsonText::EndObject() {
  state_->writer.EndObject();
  return *this;
}

JsonText& JsonText::StartArray() {
  state_->writer.StartArray();
  return *this;
}

JsonText& JsonText::EndArray() {
  state_->writer.EndArray();
  return *this;
}

JsonText& JsonText::Key(std::string_view name) {
  state_->writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
  return *this;
}

JsonText& JsonText::String(std::string_view value) {
  const std::string valid = ValidUtf8(value);
  state_->writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
  return *this;
}

JsonText& JsonText::Number(std::int64_t value) {
  state_->writer.Int64(value);
  return *this;
}

JsonText& JsonText::Boolean(bool value) {
  state_->writer.Bool(value);
  return *this;
}

std::string JsonText::Take() {
  return {state_->buffer.GetString(), state_->buffer.GetSize()};
}

}  // namespace vantry_sim
