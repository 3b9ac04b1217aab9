#include "connection/json_parsing.h"

#include "base/settings.h"
#include "connection/document_builder.h"

namespace lxservices::cms_interface::vantry {
namespace {

template <typename Source>
bool ParseInto(const Source& source, rapidjson::Document& document) {
  bool parsed = false;
  auto generate = [&](rapidjson::Document& handler) {
    DocumentBuilder builder(handler);
    parsed = ReadJson(source, builder);
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
  const auto bounded = [&]() -> std::string_view {
    const std::string_view piece = next();
    isTooLong = isTooLong || piece.size() > room;
    if (isTooLong) return {};
    room -= piece.size();
    return piece;
  };
  if (ParseInto(JsonPieces(bounded), document) && !isTooLong) return true;
  document.SetNull();
  return false;
}

bool ParseJson(std::string_view text, rapidjson::Document& document) {
  return text.size() <= CurrentSettings()->largestJson && ParseInto(text, document);
}

}  // namespace lxservices::cms_interface::vantry
