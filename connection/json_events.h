#pragma once

#include <rapidjson/rapidjson.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "connection/json_grammar.h"
#include "connection/json_number.h"

namespace lxservices::cms_interface::vantry {

/// Deepest nesting of objects and arrays that is read. An expanded folder tree, the deepest answer there is,
/// takes two levels for each folder level.
inline constexpr std::size_t maximumJsonDepth = 512;

/// Turns the events of Boost.JSON's parser, whose names and parameters these are, into those of RapidJSON's
/// reader. A text that a piece holds whole and without escapes is handed on where it is; its bytes are valid
/// during the event alone and no zero byte follows them. Ends the parse below maximumJsonDepth, and at a text
/// that is longer than it may be.
template <typename Handler>
class JsonEvents {
 public:
  static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
  static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
  static constexpr std::size_t max_key_size = std::numeric_limits<rapidjson::SizeType>::max();
  static constexpr std::size_t max_string_size = max_key_size;

  using Error = json_grammar::error_code;
  using Text = json_grammar::string_view;

  /// @param longestText  in bytes, as it is without its escapes
  JsonEvents(Handler& handler, std::uint64_t longestText) : handler_(handler), longestText_(longestText) {
    constexpr std::size_t usualLevels = 16;
    levels_.reserve(usualLevels);
    levels_.emplace_back();
  }

  bool on_document_begin(Error&) { return true; }
  bool on_document_end(Error&) { return true; }
  bool on_object_begin(Error& error) { return Begin(Kind::Object, error); }
  bool on_object_end(std::size_t, Error& error) { return Value(handler_.EndObject(Leave()), error); }
  bool on_array_begin(Error& error) { return Begin(Kind::Array, error); }
  bool on_array_end(std::size_t, Error& error) { return Value(handler_.EndArray(Leave()), error); }
  bool on_key_part(Text part, std::size_t, Error& error) { return Collect(part, error); }
  bool on_key(Text text, std::size_t, Error& error);
  bool on_string_part(Text part, std::size_t, Error& error) { return Collect(part, error); }
  bool on_string(Text text, std::size_t, Error& error);
  bool on_number_part(Text part, Error&);
  bool on_int64(std::int64_t, Text text, Error& error) { return Number(text, error); }
  bool on_uint64(std::uint64_t, Text text, Error& error) { return Number(text, error); }
  bool on_double(double, Text text, Error& error) { return Number(text, error); }
  bool on_bool(bool value, Error& error) { return Value(handler_.Bool(value), error); }
  bool on_null(Error& error) { return Value(handler_.Null(), error); }
  bool on_comment_part(Text, Error&) { return true; }
  bool on_comment(Text, Error&) { return true; }

  /// Takes characters of a number that the parser did not hand over.
  void AddToNumber(std::string_view characters) { number_.Add(characters); }
  /// Delivers the number that was collected.
  bool EndNumber(Error& error) { return Value(number_.Deliver(handler_), error); }

  /// Whether the value of the whole text is still open.
  [[nodiscard]] bool isInside() const { return levels_.size() > 1; }
  /// A text that brings a new parser to the place after a value of the innermost container that is open.
  [[nodiscard]] std::string_view WayBack() const;
  /// Makes no events, while a new parser is brought there.
  void SetSilent(bool silent) { silent_ = silent; }

 private:
  enum class Kind : char { Text, Object, Array };
  struct Level {
    Kind kind = Kind::Text;
    rapidjson::SizeType values = 0;
  };

  bool Begin(Kind kind, Error& error);
  rapidjson::SizeType Leave();
  bool Collect(Text part, Error& error);
  [[nodiscard]] bool HasRoomFor(Text part) const { return collected_.size() + part.size() <= longestText_; }
  bool Number(Text text, Error& error);
  bool Value(bool goOn, Error& error);
  static bool Answer(bool goOn, Error& error);

  Handler& handler_;
  const std::uint64_t longestText_;
  /// The first is the text itself, and the others are open.
  std::vector<Level> levels_;
  std::string collected_;  ///< of a text that comes in parts
  JsonNumber number_;
  bool silent_ = false;
};

template <typename Handler>
bool JsonEvents<Handler>::Begin(Kind kind, Error& error) {
  if (silent_) return true;
  if (levels_.size() > maximumJsonDepth) return Answer(false, error);
  levels_.push_back({kind});
  return Answer(kind == Kind::Object ? handler_.StartObject() : handler_.StartArray(), error);
}

// The number of members or elements is counted here, since a parser that was brought back knows only some of
// them.
template <typename Handler>
rapidjson::SizeType JsonEvents<Handler>::Leave() {
  const rapidjson::SizeType values = levels_.back().values;
  levels_.pop_back();
  return values;
}

template <typename Handler>
bool JsonEvents<Handler>::Collect(Text part, Error& error) {
  if (!HasRoomFor(part)) return Answer(false, error);
  collected_.append(part.data(), part.size());
  return true;
}

template <typename Handler>
bool JsonEvents<Handler>::on_key(Text text, std::size_t, Error& error) {
  if (silent_) return true;
  if (!HasRoomFor(text)) return Answer(false, error);
  if (collected_.empty()) {
    return Answer(handler_.Key(text.data(), static_cast<rapidjson::SizeType>(text.size()), true), error);
  }
  collected_.append(text.data(), text.size());
  const bool goOn =
      handler_.Key(collected_.data(), static_cast<rapidjson::SizeType>(collected_.size()), true);
  collected_.clear();
  return Answer(goOn, error);
}

template <typename Handler>
bool JsonEvents<Handler>::on_string(Text text, std::size_t, Error& error) {
  if (silent_) return true;
  if (!HasRoomFor(text)) return Answer(false, error);
  if (collected_.empty()) {
    return Value(handler_.String(text.data(), static_cast<rapidjson::SizeType>(text.size()), true), error);
  }
  collected_.append(text.data(), text.size());
  const bool goOn =
      handler_.String(collected_.data(), static_cast<rapidjson::SizeType>(collected_.size()), true);
  collected_.clear();
  return Value(goOn, error);
}

template <typename Handler>
bool JsonEvents<Handler>::on_number_part(Text part, Error&) {
  number_.Add({part.data(), part.size()});
  return true;
}

template <typename Handler>
bool JsonEvents<Handler>::Number(Text text, Error& error) {
  number_.Add({text.data(), text.size()});
  return EndNumber(error);
}

template <typename Handler>
bool JsonEvents<Handler>::Value(bool goOn, Error& error) {
  ++levels_.back().values;
  return Answer(goOn, error);
}

// The parser takes a refusal without an error for a piece that ended.
template <typename Handler>
bool JsonEvents<Handler>::Answer(bool goOn, Error& error) {
  if (!goOn) error = json_grammar::error::exception;
  return goOn;
}

template <typename Handler>
std::string_view JsonEvents<Handler>::WayBack() const {
  switch (levels_.back().kind) {
    case Kind::Object:
      return R"({"":"")";
    case Kind::Array:
      return R"(["")";
    default:
      return R"("")";
  }
}

}  // namespace lxservices::cms_interface::vantry
