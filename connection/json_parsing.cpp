#include "connection/json_parsing.h"

namespace lxservices::cms_interface::vantry {
namespace {

template <typename Stream>
bool ParseInto(Stream& stream, rapidjson::Document& document) {
  bool parsed = false;
  auto generate = [&](rapidjson::Document& handler) {
    parsed = ReadJson(stream, handler);
    return parsed;
  };
  document.SetNull();
  document.Populate(generate);
  return parsed;
}

}  // namespace

bool ParseJson(rapidjson::FileReadStream& stream, rapidjson::Document& document) {
  return ParseInto(stream, document);
}

bool ParseJson(rapidjson::MemoryStream& stream, rapidjson::Document& document) {
  return ParseInto(stream, document);
}

}  // namespace lxservices::cms_interface::vantry
