#include "simulator/wire/faults.h"

#include <array>
#include <charconv>
#include <utility>

namespace vantry_sim {
namespace {

using Kind = FaultAction::Kind;

constexpr const char* form =
    "\"METHOD PATTERN=[after:N,][chance:PERCENT[:SEED],]ACTION[*COUNT]\", where ACTION is "
    "STATUS|stall[:BYTES]|cut:BYTES|chunked-cut:BYTES|drop|lost-answer|slow:BYTES_PER_SECOND|"
    "delay:MILLISECONDS|busy:SECONDS|status:NNN:BODY|corrupt|redirect:URL|expire-session";

constexpr std::uint64_t longestDelay = 3'600'000;
constexpr int unavailable = 503;
constexpr std::size_t longestRule = 64 * 1024;

/// An action that is one word, and maybe a number after a colon.
struct ActionWord {
  std::string_view word;
  Kind kind;
  bool bare;    ///< may come without a number
  bool number;  ///< may have one
};

constexpr std::array<ActionWord, 10> words{{
    {"stall", Kind::Stall, true, true},
    {"cut", Kind::Cut, false, true},
    {"chunked-cut", Kind::ChunkedCut, false, true},
    {"drop", Kind::Drop, true, false},
    {"lost-answer", Kind::LostAnswer, true, false},
    {"slow", Kind::Slow, false, true},
    {"delay", Kind::Delay, false, true},
    {"busy", Kind::Busy, false, true},
    {"corrupt", Kind::Corrupt, true, false},
    {"expire-session", Kind::ExpireSession, true, false},
}};

std::optional<std::uint64_t> NumberOf(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || code != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<int> StatusOf(std::string_view text) {
  const auto status = NumberOf(text);
  if (!status || *status < 200 || *status > 599) return std::nullopt;
  return static_cast<int>(*status);
}

/// A text goes into a header line or an answer as it is.
bool IsHeaderText(std::string_view text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) return false;
  }
  return !text.empty();
}

std::optional<FaultAction> PlainAction(std::string_view text) {
  if (const auto status = StatusOf(text)) return FaultAction{Kind::Status, *status, std::nullopt, {}};
  const auto colon = text.find(':');
  const bool bare = colon == std::string_view::npos;
  for (const ActionWord& known : words) {
    if (known.word != text.substr(0, colon) || !(bare ? known.bare : known.number)) continue;
    if (bare) return FaultAction{known.kind, 0, std::nullopt, {}};
    const auto number = NumberOf(text.substr(colon + 1));
    if (!number || (known.kind == Kind::Slow && *number == 0) ||
        (known.kind == Kind::Delay && *number > longestDelay)) {
      return std::nullopt;
    }
    return FaultAction{known.kind, known.kind == Kind::Busy ? unavailable : 0, number, {}};
  }
  return std::nullopt;
}

/// An action that ends in a text of its own.
std::optional<FaultAction> ActionWithText(std::string_view text) {
  if (text.starts_with("redirect:")) {
    text.remove_prefix(9);
    if (!IsHeaderText(text)) return std::nullopt;
    return FaultAction{Kind::Redirect, 302, std::nullopt, std::string(text)};
  }
  if (!text.starts_with("status:")) return std::nullopt;
  text.remove_prefix(7);
  const auto colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto status = StatusOf(text.substr(0, colon));
  if (!status) return std::nullopt;
  return FaultAction{Kind::Status, *status, std::nullopt, std::string(text.substr(colon + 1))};
}

/// Takes `WORD` and what follows it up to the next comma off the front.
std::optional<std::string_view> TakeModifier(std::string_view& text, std::string_view word) {
  if (!text.starts_with(word)) return std::nullopt;
  const auto comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const std::string_view value = text.substr(word.size(), comma - word.size());
  text.remove_prefix(comma + 1);
  return value;
}

/// @return what is wrong with them; null for nothing
const char* TakeModifiers(std::string_view& text, FaultRule& rule) {
  if (const auto value = TakeModifier(text, "after:")) {
    const auto number = NumberOf(*value);
    if (!number) return "no number follows after:";
    rule.after = *number;
  }
  if (const auto value = TakeModifier(text, "chance:")) {
    const auto colon = value->find(':');
    const auto percent = NumberOf(value->substr(0, colon));
    if (!percent || *percent < 1 || *percent > 100) return "no percentage from 1 to 100 follows chance:";
    rule.percent = static_cast<unsigned>(*percent);
    if (colon != std::string_view::npos) {
      const auto seed = NumberOf(value->substr(colon + 1));
      if (!seed) return "no number as the seed of chance:";
      rule.seed = *seed;
    }
  }
  return nullptr;
}

/// Whether an action has a text of its own, which may hold any character.
enum class ActionForm { Plain, WithText };

/// Reads everything after the "=".
/// @return what is wrong with it; null for nothing
const char* ReadEffect(std::string_view text, ActionForm actionForm, FaultRule& rule) {
  const bool withText = actionForm == ActionForm::WithText;
  if (const char* problem = TakeModifiers(text, rule)) return problem;
  if (withText && !text.starts_with("status:") && !text.starts_with("redirect:")) return "unknown action";
  if (const auto star = text.rfind('*'); star != std::string_view::npos) {
    const auto count = NumberOf(text.substr(star + 1));
    // A text of its own may hold a star that counts nothing.
    if ((!count || *count == 0) && !withText) return "no count above zero";
    if (count && *count > 0) {
      rule.count = count;
      text = text.substr(0, star);
    }
  }
  auto action = withText ? ActionWithText(text) : PlainAction(text);
  if (!action) return "unknown action";
  rule.action = std::move(*action);
  return nullptr;
}

/// Where the "=" is that separates pattern and action, and the action after it.
const char* SplitAtEquals(std::string_view text, std::size_t from, std::size_t& equals, FaultRule& rule) {
  for (auto at = text.find('=', from); at != std::string_view::npos; at = text.find('=', at + 1)) {
    FaultRule attempt = rule;
    if (ReadEffect(text.substr(at + 1), ActionForm::WithText, attempt) != nullptr) continue;
    equals = at;
    rule = std::move(attempt);
    return nullptr;
  }
  equals = text.rfind('=');
  if (equals == std::string_view::npos || equals < from) return "no \"=\" after the pattern";
  return ReadEffect(text.substr(equals + 1), ActionForm::Plain, rule);
}

bool IsMethod(std::string_view text) {
  if (text == "*") return true;
  for (const char c : text) {
    if (c < 'A' || c > 'Z') return false;
  }
  return !text.empty();
}

/// @return what is wrong with the text; null for nothing
const char* ReadRule(std::string_view text, FaultRule& rule) {
  if (text.size() > longestRule) return "too long a text";
  const auto blank = text.find(' ');
  if (blank == std::string_view::npos) return "no blank after the method";
  rule.method = text.substr(0, blank);
  if (!IsMethod(rule.method)) return "no method in capitals";
  std::size_t equals = 0;
  if (const char* problem = SplitAtEquals(text, blank + 1, equals, rule)) return problem;
  rule.pattern = text.substr(blank + 1, equals - blank - 1);
  if (rule.pattern.empty()) return "empty pattern";
  if (rule.pattern.front() != '/' && rule.pattern.front() != '*') rule.pattern.insert(0, "/");
  return nullptr;
}

}  // namespace

std::optional<FaultRule> ParseFaultRule(std::string_view text, std::string* error) {
  FaultRule rule;
  const char* problem = ReadRule(text, rule);
  if (problem == nullptr) return rule;
  *error = std::string(problem) + " in \"" + std::string(text.substr(0, 200)) + "\"; the form is " + form;
  return std::nullopt;
}

bool GlobMatches(std::string_view pattern, std::string_view text) {
  std::size_t p = 0;
  std::size_t t = 0;
  std::size_t star = std::string_view::npos;
  std::size_t resume = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      resume = t;
    } else if (p < pattern.size() && pattern[p] == text[t]) {
      ++p;
      ++t;
    } else if (star != std::string_view::npos) {
      // The last "*" takes one character more; earlier ones need not move, since it can take all they could.
      p = star + 1;
      t = ++resume;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

}  // namespace vantry_sim
