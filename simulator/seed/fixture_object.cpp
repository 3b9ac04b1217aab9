#include "simulator/seed/fixture_object.h"

#include <algorithm>
#include <set>

namespace vantry_sim {
namespace {

constexpr std::size_t mostProblems = 20;

}  // namespace

void FixtureProblems::Add(std::uint32_t line, std::string reason) {
  if (list_.size() < mostProblems) list_.push_back({line, std::move(reason)});
}

FixtureObject::FixtureObject(JsonValue value, std::string_view what,
                             const std::vector<std::string_view>& keys, FixtureProblems& problems)
    : value_(value), what_(what), problems_(problems) {
  if (!value.IsObject()) {
    problems_.Add(value.Line(), what_ + " must be a set of keys and values");
    return;
  }
  std::set<std::string_view> seen;
  for (const JsonValue member : value) {
    const std::string name(member.Name());
    if (std::find(keys.begin(), keys.end(), name) == keys.end())
      problems_.Add(member.Line(), what_ + " has no key \"" + name + "\"");
    if (!seen.insert(member.Name()).second) problems_.Add(member.Line(), "the key " + name + " comes twice");
  }
}

JsonValue FixtureObject::Value(std::string_view key) const {
  const JsonValue value = value_.Find(key);
  return value.IsNull() ? JsonValue() : value;
}

std::string FixtureObject::Text(std::string_view key, std::string_view otherwise) const {
  const JsonValue value = Value(key);
  if (value.IsMissing()) return std::string(otherwise);
  auto text = ScalarText(value);
  if (!text) {
    Problem(key, "must be a text");
  } else if (text->find('\0') != std::string::npos) {
    Problem(key, "must not hold a zero byte");
  }
  return text.value_or("");
}

std::string FixtureObject::Required(std::string_view key) const {
  std::string text = Text(key);
  if (text.empty() && value_.IsObject() && (!Has(key) || ScalarText(Value(key)))) Problem(key, "is missing");
  return text;
}

bool FixtureObject::Flag(std::string_view key, bool otherwise) const {
  const JsonValue value = Value(key);
  if (value.IsMissing()) return otherwise;
  if (!value.IsBoolean()) Problem(key, "must be true or false");
  return value.Boolean();
}

std::optional<std::int64_t> FixtureObject::Number(std::string_view key) const {
  const JsonValue value = Value(key);
  if (value.IsMissing()) return std::nullopt;
  const auto number = value.Integer();
  if (!number || *number < 0) Problem(key, "must be a whole number");
  return number.value_or(0) < 0 ? 0 : number.value_or(0);
}

JsonValue FixtureObject::List(std::string_view key) const {
  const JsonValue value = Value(key);
  if (value.IsMissing() || value.IsArray()) return value;
  Problem(key, "must be a list");
  return {};
}

void FixtureObject::Problem(std::string_view key, const std::string& reason) const {
  const JsonValue value = Value(key);
  problems_.Add(value.IsMissing() ? line() : value.Line(), std::string(key) + " of " + what_ + " " + reason);
}

std::optional<std::string> ScalarText(JsonValue value) {
  if (value.IsText()) return std::string(value.Text());
  if (value.IsNumber()) return std::string(value.NumberText());
  if (value.IsBoolean()) return value.Boolean() ? "true" : "false";
  return std::nullopt;
}

}  // namespace vantry_sim
