#include "simulator/wire/json_members.h"

namespace vantry_sim {

JsonMembers::JsonMembers(const rapidjson::Value& value, std::string& problem) : problem_(problem) {
  if (value.IsObject()) {
    object_ = &value;
  } else if (problem_.empty()) {
    problem_ = "an object was expected";
  }
}

JsonMembers& JsonMembers::Text(const char* name, std::string& out, bool required) {
  const rapidjson::Value* value = Find(name, required);
  if (value == nullptr) return *this;
  if (!value->IsString()) {
    Wrong(name, "is no text");
    return *this;
  }
  out.assign(value->GetString(), value->GetStringLength());
  if (out.find('\0') != std::string::npos) Wrong(name, "holds a zero byte");
  if (required && out.empty()) Wrong(name, "is empty");
  return *this;
}

JsonMembers& JsonMembers::Flag(const char* name, bool& out) {
  const rapidjson::Value* value = Find(name, false);
  if (value == nullptr) return *this;
  if (value->IsBool()) {
    out = value->GetBool();
  } else {
    Wrong(name, "is neither true nor false");
  }
  return *this;
}

JsonMembers& JsonMembers::Number(const char* name, std::int64_t& out, bool required) {
  const rapidjson::Value* value = Find(name, required);
  if (value == nullptr) return *this;
  if (value->IsInt64()) {
    out = value->GetInt64();
  } else {
    Wrong(name, "is no whole number");
  }
  return *this;
}

const rapidjson::Value* JsonMembers::Object(const char* name, bool required) {
  const rapidjson::Value* value = Find(name, required);
  if (value == nullptr || value->IsObject()) return value;
  Wrong(name, "is no object");
  return nullptr;
}

const rapidjson::Value* JsonMembers::Array(const char* name, bool required) {
  const rapidjson::Value* value = Find(name, required);
  if (value == nullptr || value->IsArray()) return value;
  Wrong(name, "is no array");
  return nullptr;
}

bool JsonMembers::Has(const char* name) const {
  return object_ != nullptr && object_->HasMember(name);
}

const rapidjson::Value* JsonMembers::Find(const char* name, bool required) {
  if (object_ == nullptr) return nullptr;
  const auto member = object_->FindMember(name);
  if (member != object_->MemberEnd()) return &member->value;
  if (required) Wrong(name, "is missing");
  return nullptr;
}

void JsonMembers::Wrong(const char* name, const char* what) {
  if (problem_.empty()) problem_.append(name).append(" ").append(what);
}

}  // namespace vantry_sim
