#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantry_sim {

enum class JsonKind : std::uint8_t { Missing, Null, Boolean, Number, Text, Array, Object };

/// The values of one JSON text, flat: a text of any depth costs no stack, neither here nor when it goes.
struct JsonStore {
  struct Node {
    JsonKind kind = JsonKind::Null;
    bool boolean = false;
    std::uint32_t line = 0;
    std::uint32_t nameAt = 0;  ///< of a member, in `texts`
    std::uint32_t nameSize = 0;
    std::uint32_t textAt = 0;  ///< of a text, and of a number as it was written
    std::uint32_t textSize = 0;
    std::uint32_t first = 0;  ///< index of the first child; 0: none, since the root is nobody's child
    std::uint32_t next = 0;   ///< index of the next sibling; 0: none
    std::uint32_t count = 0;  ///< children
  };
  std::vector<Node> nodes;
  std::string texts;
};

/// One value of a JSON text, as a handle that is cheap to copy. Lives as long as its document. A handle of
/// kind Missing answers every question with nothing.
class JsonValue {
 public:
  JsonValue() = default;
  JsonValue(const JsonStore* store, std::uint32_t index) : store_(store), index_(index) {}

  [[nodiscard]] JsonKind Kind() const { return store_ == nullptr ? JsonKind::Missing : node().kind; }
  [[nodiscard]] bool IsMissing() const { return Kind() == JsonKind::Missing; }
  [[nodiscard]] bool IsNull() const { return Kind() == JsonKind::Null; }
  [[nodiscard]] bool IsBoolean() const { return Kind() == JsonKind::Boolean; }
  [[nodiscard]] bool IsNumber() const { return Kind() == JsonKind::Number; }
  [[nodiscard]] bool IsText() const { return Kind() == JsonKind::Text; }
  [[nodiscard]] bool IsArray() const { return Kind() == JsonKind::Array; }
  [[nodiscard]] bool IsObject() const { return Kind() == JsonKind::Object; }

  [[nodiscard]] bool Boolean() const { return IsBoolean() && node().boolean; }

  /// A text, decoded. Empty for every other kind.
  [[nodiscard]] std::string_view Text() const { return IsText() ? Written() : std::string_view(); }

  /// A number as it was written, such as "1e-7". Empty for every other kind.
  [[nodiscard]] std::string_view NumberText() const { return IsNumber() ? Written() : std::string_view(); }

  /// A number that was written as a whole one, without fraction and exponent, and fits 64 bits.
  [[nodiscard]] std::optional<std::int64_t> Integer() const;

  /// Children of an array or an object.
  [[nodiscard]] std::size_t Size() const { return store_ == nullptr ? 0 : node().count; }

  /// The first member of this name; missing for none, and for what is no object.
  [[nodiscard]] JsonValue Find(std::string_view name) const;

  /// The name of a member of an object; empty for every other value.
  [[nodiscard]] std::string_view Name() const;

  /// The line of the text that the value begins in, counted from 1.
  [[nodiscard]] std::uint32_t Line() const { return store_ == nullptr ? 0 : node().line; }

  /// Goes through the children of an array or an object, in their order.
  class Iterator {
   public:
    Iterator(const JsonStore* store, std::uint32_t index) : store_(store), index_(index) {}
    JsonValue operator*() const { return {store_, index_}; }
    Iterator& operator++() {
      index_ = store_->nodes[index_].next;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return index_ != other.index_; }

   private:
    const JsonStore* store_;
    std::uint32_t index_;
  };
  [[nodiscard]] Iterator begin() const { return {store_, store_ == nullptr ? 0 : node().first}; }
  [[nodiscard]] Iterator end() const { return {store_, 0}; }

 private:
  [[nodiscard]] const JsonStore::Node& node() const { return store_->nodes[index_]; }
  [[nodiscard]] std::string_view Written() const {
    return std::string_view(store_->texts).substr(node().textAt, node().textSize);
  }

  const JsonStore* store_ = nullptr;
  std::uint32_t index_ = 0;
};

}  // namespace vantry_sim
