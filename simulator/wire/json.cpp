#include "simulator/wire/json.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "simulator/wire/utf8.h"

namespace vantry_sim {
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
  const auto write = [this](std::string_view text) {
    state_->writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  };
  if (IsUtf8(value)) {
    write(value);
  } else {
    write(ValidUtf8(value));
  }
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

JsonText& JsonText::Null() {
  state_->writer.Null();
  return *this;
}

JsonText& JsonText::RawNumber(std::string_view text) {
  state_->writer.RawValue(text.data(), text.size(), rapidjson::kNumberType);
  return *this;
}

JsonText& JsonText::Raw(std::string_view text) {
  state_->writer.RawValue(text.data(), text.size(), rapidjson::kObjectType);
  return *this;
}

std::string JsonText::Take() {
  return {state_->buffer.GetString(), state_->buffer.GetSize()};
}

}  // namespace vantry_sim
