#include "simulator/wire/json_members.h"

namespace vantry_sim {

JsonMembers::JsonMembers(JsonValue value, std::string& problem) : problem_(problem) {
  if (value.IsObject()) {
    object_ = value;
  } else if (problem_.empty()) {
    problem_ = "an object was expected";
  }
}

JsonMembers& JsonMembers::Text(const char* name, std::string& out, Presence presence) {
  const JsonValue value = Find(name, presence);
  if (value.IsMissing()) return *this;
  if (!value.IsText()) {
    Wrong(name, "is no text");
    return *this;
  }
  out = value.Text();
  if (out.find('\0') != std::string::npos) Wrong(name, "holds a zero byte");
  if (presence == Presence::Required && out.empty()) Wrong(name, "is empty");
  return *this;
}

JsonMembers& JsonMembers::Flag(const char* name, bool& out) {
  const JsonValue value = Find(name, Presence::Optional);
  if (value.IsMissing()) return *this;
  if (value.IsBoolean()) {
    out = value.Boolean();
  } else {
    Wrong(name, "is neither true nor false");
  }
  return *this;
}

JsonMembers& JsonMembers::Number(const char* name, std::int64_t& out, Presence presence) {
  const JsonValue value = Find(name, presence);
  if (value.IsMissing()) return *this;
  if (const auto number = value.Integer()) {
    out = *number;
  } else {
    Wrong(name, "is no whole number");
  }
  return *this;
}

JsonValue JsonMembers::Object(const char* name, Presence presence) {
  const JsonValue value = Find(name, presence);
  if (value.IsMissing() || value.IsObject()) return value;
  Wrong(name, "is no object");
  return {};
}

JsonValue JsonMembers::Array(const char* name, Presence presence) {
  const JsonValue value = Find(name, presence);
  if (value.IsMissing() || value.IsArray()) return value;
  Wrong(name, "is no array");
  return {};
}

bool JsonMembers::Has(const char* name) const {
  return !object_.Find(name).IsMissing();
}

JsonValue JsonMembers::Find(const char* name, Presence presence) {
  if (object_.IsMissing()) return {};
  const JsonValue member = object_.Find(name);
  if (member.IsMissing() && presence == Presence::Required) Wrong(name, "is missing");
  return member;
}

void JsonMembers::Wrong(const char* name, const char* what) {
  if (problem_.empty()) problem_.append(name).append(" ").append(what);
}

}  // namespace vantry_sim
