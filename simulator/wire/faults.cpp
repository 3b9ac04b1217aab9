#include "simulator/wire/faults.h"

#include <charconv>
#include <utility>

namespace vantry_sim {
namespace {

std::optional<std::uint64_t> NumberOf(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || code != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<FaultAction> ActionWithBytes(FaultAction::Kind kind, std::string_view bytes) {
  const auto number = NumberOf(bytes);
  if (!number) return std::nullopt;
  return FaultAction{kind, 0, number};
}

std::optional<FaultAction> ActionOf(std::string_view text) {
  if (text == "stall") return FaultAction{FaultAction::Kind::kStall, 0, std::nullopt};
  if (text == "drop") return FaultAction{FaultAction::Kind::kDrop, 0, std::nullopt};
  if (const auto colon = text.find(':'); colon != std::string_view::npos) {
    const std::string_view word = text.substr(0, colon);
    const std::string_view bytes = text.substr(colon + 1);
    if (word == "stall") return ActionWithBytes(FaultAction::Kind::kStall, bytes);
    if (word == "cut") return ActionWithBytes(FaultAction::Kind::kCut, bytes);
    if (word == "chunked-cut") return ActionWithBytes(FaultAction::Kind::kChunkedCut, bytes);
    return std::nullopt;
  }
  const auto status = NumberOf(text);
  if (!status || *status < 200 || *status > 599) return std::nullopt;
  return FaultAction{FaultAction::Kind::kStatus, static_cast<int>(*status), std::nullopt};
}

bool IsMethod(std::string_view text) {
  if (text == "*") return true;
  for (const char c : text) {
    if (c < 'A' || c > 'Z') return false;
  }
  return !text.empty();
}

}  // namespace

std::optional<FaultRule> ParseFaultRule(std::string_view text, std::string* error) {
  const auto fail = [&](const char* what) -> std::optional<FaultRule> {
    *error =
        std::string(what) + " in \"" + std::string(text) +
        "\"; the form is \"METHOD PATTERN=STATUS|stall[:BYTES]|cut:BYTES|chunked-cut:BYTES|drop[*COUNT]\"";
    return std::nullopt;
  };
  const auto blank = text.find(' ');
  const auto equals = text.rfind('=');
  if (blank == std::string_view::npos) return fail("no blank behind the method");
  if (equals == std::string_view::npos || equals < blank) return fail("no \"=\" behind the pattern");

  FaultRule rule;
  rule.method = text.substr(0, blank);
  if (!IsMethod(rule.method)) return fail("no method in capitals");
  rule.pattern = text.substr(blank + 1, equals - blank - 1);
  if (rule.pattern.empty()) return fail("empty pattern");
  if (rule.pattern.front() != '/' && rule.pattern.front() != '*') rule.pattern.insert(0, "/");

  std::string_view action = text.substr(equals + 1);
  if (const auto star = action.rfind('*'); star != std::string_view::npos) {
    rule.count = NumberOf(action.substr(star + 1));
    if (!rule.count || *rule.count == 0) return fail("no count above zero");
    action = action.substr(0, star);
  }
  const auto known = ActionOf(action);
  if (!known) return fail("unknown action");
  rule.action = *known;
  return rule;
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

FaultTable::FaultTable(std::vector<FaultRule> rules) : rules_(std::move(rules)) {}

std::optional<FaultAction> FaultTable::Take(std::string_view method, std::string_view target) {
  if (rules_.empty()) return std::nullopt;
  const std::lock_guard lock(mutex_);
  for (FaultRule& rule : rules_) {
    if (rule.method != "*" && rule.method != method) continue;
    if (rule.count && *rule.count == 0) continue;
    if (!GlobMatches(rule.pattern, target)) continue;
    if (rule.count) --*rule.count;
    return rule.action;
  }
  return std::nullopt;
}

}  // namespace vantry_sim
