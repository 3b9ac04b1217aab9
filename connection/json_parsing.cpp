#include "connection/json_parsing.h"

#include "connection/document_builder.h"

namespace lxservices::cms_interface::vantry {
namespace {

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
  if (!parsed) document.SetNull();
  return parsed;
}

}  // namespace

std::string_view BoundedPieces::Next() {
  const std::string_view piece = next_();
  isTooLong_ = isTooLong_ || piece.size() > room_;
  if (isTooLong_) return {};
  room_ -= piece.size();
  return piece;
}

bool ParseJson(const JsonPieces& next, rapidjson::Document& document) {
  return Fill(document, [&next](DocumentBuilder& builder) { return ReadBoundedJson(next, builder); });
}

bool ParseJson(std::string_view text, rapidjson::Document& document) {
  document.SetNull();
  const auto read = [text](DocumentBuilder& builder) { return ReadJson(text, builder); };
  return text.size() <= CurrentSettings()->largestJson && Fill(document, read);
}

}  // namespace lxservices::cms_interface::vantry
