#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "base/settings.h"
#include "connection/json_events.h"
#include "connection/surrogate_filter.h"

namespace lxservices::cms_interface::vantry {

/// Reads JSON piece by piece and hands its events to a handler, whose functions are those of RapidJSON's
/// handlers: Null, Bool, Int, Uint, Int64, Uint64, Double, String, Key, StartObject, EndObject, StartArray
/// and EndArray, each of which returns false to end the parse. Every byte counts as it does in RapidJSON's
/// reader (see JsonNumber and SurrogateFilter, and a zero byte is no end but an error). Makes no request.
///
/// The grammar is Boost.JSON's parser. It goes down by recursion, for a few levels alone: for what is deeper
/// a new parser begins, and another one goes on after its end. So neither the stack nor the memory grows with
/// the nesting of the text, but for the eight bytes that a level takes, of which there are at most
/// maximumJsonDepth. A text within it may have the length of the settings (longestJsonText).
template <typename Handler>
class JsonReader {
 public:
  /// The handler must outlive the reader.
  explicit JsonReader(Handler& handler) : parser_(Options(), handler, CurrentSettings()->longestJsonText) {}

  /// Takes the next piece; how a text is cut into pieces changes nothing.
  /// @return false from the first error on, and once the handler has ended the parse
  [[nodiscard]] bool Read(std::string_view piece) { return Feed(filter_.Pass(piece)); }

  /// Takes the end of the text.
  /// @return whether it was one JSON value, with nothing but white space around it, read to its end
  [[nodiscard]] bool Finish();

 private:
  using Error = typename JsonEvents<Handler>::Error;

  static json_grammar::parse_options Options();
  bool Feed(std::string_view text);
  std::size_t Step(std::string_view text);
  void BeginEndlessExponent(std::string_view text);
  std::size_t SkipEndlessExponent(std::string_view text);
  void GoOnInContainer();

  json_grammar::basic_parser<JsonEvents<Handler>> parser_;
  SurrogateFilter filter_;
  bool inEndlessExponent_ = false;
  bool failed_ = false;
};

template <typename Handler>
json_grammar::parse_options JsonReader<Handler>::Options() {
  constexpr std::size_t levelsByRecursion = 32;
  json_grammar::parse_options options;
  options.max_depth = levelsByRecursion;
  // Texts of servers with a code page of their own were always read as they are.
  options.allow_invalid_utf8 = true;
  return options;
}

template <typename Handler>
bool JsonReader<Handler>::Finish() {
  Feed(filter_.heldBack());
  Feed(" ");  // ends a number, which might go on otherwise
  if (failed_) return false;
  Error error;
  parser_.write_some(false, "", 0, error);
  return !error && parser_.done();
}

template <typename Handler>
bool JsonReader<Handler>::Feed(std::string_view text) {
  while (!failed_ && !text.empty()) text.remove_prefix(Step(text));
  return !failed_;
}

// Gives the number of bytes that it got through.
template <typename Handler>
std::size_t JsonReader<Handler>::Step(std::string_view text) {
  if (inEndlessExponent_) return SkipEndlessExponent(text);
  Error error;
  const std::size_t read = parser_.write_some(true, text.data(), text.size(), error);
  if (error == json_grammar::error::too_deep) {
    parser_.reset();  // what is next is a container, with which a new parser can begin
  } else if (error == json_grammar::error::exponent_overflow) {
    BeginEndlessExponent(text.substr(0, read));
  } else if (error) {
    failed_ = true;
  } else if (parser_.done() && parser_.handler().isInside()) {
    GoOnInContainer();
  } else {
    failed_ = read < text.size();
  }
  return read;
}

// The parser gives up at an exponent that no int can hold, though 1e-99999999999 is a number, and did not
// hand over what it has read of it in this piece.
template <typename Handler>
void JsonReader<Handler>::BeginEndlessExponent(std::string_view text) {
  const std::size_t before = text.find_last_not_of("0123456789+-.eE");
  if (before != std::string_view::npos) text.remove_prefix(before + 1);
  parser_.handler().AddToNumber(text);
  inEndlessExponent_ = true;
}

template <typename Handler>
std::size_t JsonReader<Handler>::SkipEndlessExponent(std::string_view text) {
  const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
  parser_.handler().AddToNumber(text.substr(0, digits));
  if (digits == text.size()) return digits;
  inEndlessExponent_ = false;
  Error error;
  failed_ = !parser_.handler().EndNumber(error);
  if (!failed_) GoOnInContainer();
  return digits;
}

template <typename Handler>
void JsonReader<Handler>::GoOnInContainer() {
  parser_.reset();
  const std::string_view way = parser_.handler().WayBack();
  parser_.handler().SetSilent(true);
  Error error;
  parser_.write_some(true, way.data(), way.size(), error);
  parser_.handler().SetSilent(false);
}

}  // namespace lxservices::cms_interface::vantry
