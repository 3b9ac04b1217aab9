#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

#include "base/settings.h"
#include "connection/json_reader.h"

/// Reading of JSON that a server supplies, of all that there is: lists, documents, nonces, tickets. The
/// nesting is bounded by maximumJsonDepth, here and so in the readers that walk a document. Makes no request.
namespace lxservices::cms_interface::vantry {

/// Gives the next piece of a text, which is valid until the next call; empty at its end.
using JsonPieces = std::function<std::string_view()>;

/// Hands the events of a text to a handler as its pieces come; see JsonReader.
/// @return false for what is no JSON, for further text after the value, for too deep a nesting, and when the
///         handler ends the parse
template <typename Handler>
[[nodiscard]] bool ReadJson(const JsonPieces& next, Handler& handler) {
  JsonReader<Handler> reader(handler);
  for (std::string_view piece = next(); !piece.empty(); piece = next()) {
    if (!reader.Read(piece)) return false;
  }
  return reader.Finish();
}

/// The same for a text that is in memory whole.
template <typename Handler>
[[nodiscard]] bool ReadJson(std::string_view text, Handler& handler) {
  JsonReader<Handler> reader(handler);
  return reader.Read(text) && reader.Finish();
}

/// The pieces of a text that becomes something in memory: as many as the settings allow (largestJson).
class BoundedPieces {
 public:
  explicit BoundedPieces(JsonPieces next) : next_(std::move(next)) {}

  /// The next piece; empty at the end, and from the piece on that goes beyond the bound.
  [[nodiscard]] std::string_view Next();
  [[nodiscard]] bool isTooLong() const { return isTooLong_; }

 private:
  const JsonPieces next_;
  std::uint64_t room_ = CurrentSettings()->largestJson;
  bool isTooLong_ = false;
};

/// ReadJson for a handler that keeps what it is told of a text.
/// @return false also for a text that is longer than the settings allow
template <typename Handler>
[[nodiscard]] bool ReadBoundedJson(const JsonPieces& next, Handler& handler) {
  BoundedPieces pieces(next);
  return ReadJson([&pieces] { return pieces.Next(); }, handler) && !pieces.isTooLong();
}

/// Parses a text into a document, which is left null when that fails: also for a text that is longer than the
/// settings allow (largestJson), and when there is no memory for the document.
[[nodiscard]] bool ParseJson(const JsonPieces& next, rapidjson::Document& document);
[[nodiscard]] bool ParseJson(std::string_view text, rapidjson::Document& document);

}  // namespace lxservices::cms_interface::vantry
