#include "connection/json_parsing.h"

namespace lxservices::cms_interface::vantry {
namespace {

template <typename Source>
bool ParseInto(const Source& source, rapidjson::Document& document) {
  bool parsed = false;
  auto generate = [&](rapidjson::Document& handler) {
    parsed = ReadJson(source, handler);
    return parsed;
  };
  document.SetNull();
  document.Populate(generate);
  return parsed;
}

}  // namespace

bool ParseJson(const JsonPieces& next, rapidjson::Document& document) {
  return ParseInto(next, document);
}

bool ParseJson(std::string_view text, rapidjson::Document& document) {
  return ParseInto(text, document);
}

}  // namespace lxservices::cms_interface::vantry
