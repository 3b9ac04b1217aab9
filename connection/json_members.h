#pragma once

#include <rapidjson/document.h>

#include <string>
#include <string_view>

/// Lenient access to JSON from a server: a member that is absent or of another type is passed over. Pure.
namespace lxservices::cms_interface::vantry {

[[nodiscard]] inline std::string_view TextView(const rapidjson::Value& value) {
  return {value.GetString(), value.GetStringLength()};
}

/// The member of an object, or null. Of several of that name the first counts.
[[nodiscard]] inline const rapidjson::Value* FindMember(const rapidjson::Value& object,
                                                        std::string_view name) {
  if (!object.IsObject()) return nullptr;
  const auto size = static_cast<rapidjson::SizeType>(name.size());
  const auto member = object.FindMember(rapidjson::Value(rapidjson::StringRef(name.data(), size)));
  return member != object.MemberEnd() ? &member->value : nullptr;
}

/// The string member of an object, or null when it is absent or of another type.
[[nodiscard]] inline const rapidjson::Value* FindString(const rapidjson::Value& object,
                                                        std::string_view name) {
  const rapidjson::Value* value = FindMember(object, name);
  return value != nullptr && value->IsString() ? value : nullptr;
}

/// The array member of an object, or null when it is absent or of another type.
[[nodiscard]] inline const rapidjson::Value* FindArray(const rapidjson::Value& object,
                                                       std::string_view name) {
  const rapidjson::Value* value = FindMember(object, name);
  return value != nullptr && value->IsArray() ? value : nullptr;
}

/// Copies the string value; leaves the text alone for a value of another type.
inline void CopyString(const rapidjson::Value& value, std::string& text) {
  if (value.IsString()) text.assign(value.GetString(), value.GetStringLength());
}

}  // namespace lxservices::cms_interface::vantry
