#include "simulator/wire/json_reader.h"

#include <charconv>
#include <utility>
#include <vector>

#include "simulator/wire/utf8.h"

namespace vantry_sim {
namespace {

constexpr std::size_t longestText = 0x7FFFFFFF;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Reads one text from front to back. The containers that are open are in a list of their own, so that
/// depth costs no stack.
class Reader {
 public:
  Reader(std::string_view text, JsonStore& store, std::size_t deepest)
      : text_(text), store_(store), deepest_(deepest) {}

  bool Read() {
    bool expectValue = true;
    for (;;) {
      SkipBlanks();
      if (expectValue ? !ReadValue(expectValue) : !CloseOrGoOn(expectValue)) return false;
      if (!expectValue && open_.empty()) break;
    }
    SkipBlanks();
    return at_ == text_.size() || Fail("there is more after the end");
  }

  [[nodiscard]] std::uint32_t line() const { return line_; }
  [[nodiscard]] const char* reason() const { return reason_; }

 private:
  struct Open {
    std::uint32_t index;
    std::uint32_t lastChild;
  };

  bool Fail(const char* reason) {
    reason_ = reason;
    return false;
  }

  void SkipBlanks() {
    for (; at_ < text_.size(); ++at_) {
      const char c = text_[at_];
      if (c == '\n') ++line_;
      if (c != ' ' && c != '\t' && c != '\r' && c != '\n') return;
    }
  }

  [[nodiscard]] char Peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }

  /// Reads a value, with the name in front of it inside an object. @param[out] expectValue whether another
  /// value comes next, which is so after an opened container that isn't empty
  bool ReadValue(bool& expectValue) {
    std::pair<std::uint32_t, std::uint32_t> name{0, 0};
    if (!open_.empty() && store_.nodes[open_.back().index].kind == JsonKind::Object && !ReadName(name)) {
      return false;
    }
    if (store_.nodes.size() >= mostJsonValues) return Fail("it has too many values");
    const auto index = static_cast<std::uint32_t>(store_.nodes.size());
    JsonStore::Node& node = store_.nodes.emplace_back();
    node.line = line_;
    node.nameAt = name.first;
    node.nameSize = name.second;
    Attach(index);
    expectValue = false;
    const char c = Peek();
    if (c == '{' || c == '[') return OpenContainer(index, c == '{', expectValue);
    return ReadScalar(index, c);
  }

  void Attach(std::uint32_t index) {
    if (open_.empty()) return;
    Open& parent = open_.back();
    JsonStore::Node& node = store_.nodes[parent.index];
    (parent.lastChild == 0 ? node.first : store_.nodes[parent.lastChild].next) = index;
    parent.lastChild = index;
    ++node.count;
  }

  bool OpenContainer(std::uint32_t index, bool object, bool& expectValue) {
    ++at_;
    store_.nodes[index].kind = object ? JsonKind::Object : JsonKind::Array;
    SkipBlanks();
    if (Peek() == (object ? '}' : ']')) {
      ++at_;
      return true;
    }
    if (open_.size() >= deepest_) return Fail("it is nested too deeply");
    open_.push_back({index, 0});
    expectValue = true;
    return true;
  }

  /// After a value inside a container: its end, or a comma and then another value.
  bool CloseOrGoOn(bool& expectValue) {
    const bool object = store_.nodes[open_.back().index].kind == JsonKind::Object;
    const char c = Peek();
    if (c == ',') {
      ++at_;
      expectValue = true;
      return true;
    }
    if (c != (object ? '}' : ']')) return Fail(object ? "a , or } is missing" : "a , or ] is missing");
    ++at_;
    open_.pop_back();
    return true;
  }

  bool ReadName(std::pair<std::uint32_t, std::uint32_t>& name) {
    if (Peek() != '"') return Fail("the name of a member is missing");
    if (!ReadText(name)) return false;
    SkipBlanks();
    if (Peek() != ':') return Fail("a : is missing after the name of a member");
    ++at_;
    SkipBlanks();
    return true;
  }

  bool ReadScalar(std::uint32_t index, char c) {
    JsonStore::Node& node = store_.nodes[index];
    std::pair<std::uint32_t, std::uint32_t> place{0, 0};
    if (c == '"') {
      node.kind = JsonKind::Text;
      if (!ReadText(place)) return false;
    } else if (c == '-' || IsDigit(c)) {
      node.kind = JsonKind::Number;
      if (!ReadNumber(place)) return false;
    } else if (c == 't' || c == 'f') {
      node.kind = JsonKind::Boolean;
      node.boolean = c == 't';
      return ReadWord(c == 't' ? "true" : "false");
    } else {
      return ReadWord("null");
    }
    node.textAt = place.first;
    node.textSize = place.second;
    return true;
  }

  bool ReadWord(std::string_view word) {
    if (text_.substr(at_, word.size()) != word) return Fail("a value is missing");
    at_ += word.size();
    return true;
  }

  bool ReadNumber(std::pair<std::uint32_t, std::uint32_t>& place) {
    const std::size_t begin = at_;
    if (Peek() == '-') ++at_;
    if (Peek() == '0') {
      ++at_;
    } else if (!SkipDigits()) {
      return Fail("a number has no digit");
    }
    if (Peek() == '.') {
      ++at_;
      if (!SkipDigits()) return Fail("a number has no digit after its point");
    }
    if (Peek() == 'e' || Peek() == 'E') {
      ++at_;
      if (Peek() == '+' || Peek() == '-') ++at_;
      if (!SkipDigits()) return Fail("a number has no digit in its exponent");
    }
    place = {static_cast<std::uint32_t>(store_.texts.size()), static_cast<std::uint32_t>(at_ - begin)};
    store_.texts.append(text_.substr(begin, at_ - begin));
    return true;
  }

  bool SkipDigits() {
    const std::size_t begin = at_;
    while (IsDigit(Peek())) ++at_;
    return at_ > begin;
  }

  /// A text in quotes, decoded after the texts before it.
  bool ReadText(std::pair<std::uint32_t, std::uint32_t>& place) {
    const std::size_t begin = store_.texts.size();
    for (++at_; at_ < text_.size();) {
      const char c = text_[at_];
      if (c == '"') {
        ++at_;
        place = {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(store_.texts.size() - begin)};
        return true;
      }
      if (static_cast<unsigned char>(c) < 0x20) return Fail("a control character is in a text");
      if (c == '\\') {
        if (!ReadEscape()) return false;
        continue;
      }
      const std::size_t length = Utf8Length(text_.substr(at_));
      if (length == 0) return Fail("a text is no UTF-8");
      store_.texts.append(text_.substr(at_, length));
      at_ += length;
    }
    return Fail("a text has no end");
  }

  bool ReadEscape() {
    constexpr std::string_view letters = "\"\\/bfnrt";
    constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    ++at_;
    const char c = Peek();
    if (c == 'u') return ReadCodePoint();
    const auto found = letters.find(c);
    if (at_ >= text_.size() || found == std::string_view::npos) return Fail("an escape is unknown");
    store_.texts += meanings[found];
    ++at_;
    return true;
  }

  bool ReadCodePoint() {
    std::uint32_t code = 0;
    if (!ReadHexadecimal(code)) return false;
    if (code >= 0xDC00 && code <= 0xDFFF) return Fail("half of a surrogate pair is alone");
    if (code >= 0xD800 && code <= 0xDBFF) {
      std::uint32_t low = 0;
      if (text_.substr(at_, 2) != "\\u") return Fail("half of a surrogate pair is alone");
      ++at_;
      if (!ReadHexadecimal(low)) return false;
      if (low < 0xDC00 || low > 0xDFFF) return Fail("half of a surrogate pair is alone");
      code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
    }
    AppendUtf8(store_.texts, code);
    return true;
  }

  /// The four digits after the "u" that the position is at.
  bool ReadHexadecimal(std::uint32_t& code) {
    const std::string_view digits = text_.substr(at_ + 1, 4);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    if (digits.size() < 4 || error != std::errc() || end != digits.data() + 4) {
      return Fail("\\u has no four hexadecimal digits after it");
    }
    at_ += 5;
    return true;
  }

  std::string_view text_;
  JsonStore& store_;
  std::size_t deepest_;
  std::size_t at_ = 0;
  std::uint32_t line_ = 1;
  std::vector<Open> open_;
  const char* reason_ = "";
};

}  // namespace

std::optional<std::int64_t> JsonValue::Integer() const {
  const std::string_view text = NumberText();
  std::int64_t value = 0;
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || code != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

JsonValue JsonValue::Find(std::string_view name) const {
  if (!IsObject()) return {};
  for (const JsonValue member : *this) {
    if (member.Name() == name) return member;
  }
  return {};
}

std::string_view JsonValue::Name() const {
  if (store_ == nullptr) return {};
  return std::string_view(store_->texts).substr(node().nameAt, node().nameSize);
}

std::optional<JsonDocument> ReadJson(std::string_view text, JsonProblem* problem, std::size_t deepest) {
  auto store = std::make_unique<JsonStore>();
  if (text.size() > longestText) {
    if (problem != nullptr) *problem = {1, "it is longer than 2 GiB"};
    return std::nullopt;
  }
  Reader reader(text, *store, deepest);
  if (reader.Read()) return JsonDocument(std::move(store));
  if (problem != nullptr) *problem = {reader.line(), reader.reason()};
  return std::nullopt;
}

}  // namespace vantry_sim
