#pragma once

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <stdexcept>
#include <string>

namespace vtdirect_test {

/// The value of a JSON text that a test wrote.
inline rapidjson::Document Json(const std::string& text) {
  rapidjson::Document document;
  document.Parse(text.c_str(), text.size());
  if (document.HasParseError()) throw std::runtime_error("the test's own JSON is broken: " + text);
  return document;
}

/// The compact text of a JSON value, as it goes on the wire.
inline std::string JsonText(const rapidjson::Value& value) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  value.Accept(writer);
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace vtdirect_test
