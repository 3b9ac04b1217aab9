#pragma once

#include <cstdint>
#include <string_view>

namespace vantry_sim {

// What a state file means where it says nothing. Its reader and its writer go by the same.

inline constexpr std::string_view defaultKind = "Product";
inline constexpr std::string_view defaultOrganization = "Organization";
inline constexpr std::string_view defaultService = "dynamic";
inline constexpr std::string_view defaultCategory = "iso";
inline constexpr std::string_view defaultSubCategory = "FENLET";
inline constexpr std::string_view defaultApplication = "MERIDOX";
inline constexpr std::string_view defaultAuthAppVersion = "310";
inline constexpr std::string_view defaultNdVersion = "J-01";
inline constexpr std::string_view defaultFileName = "{$CAD_NAME}";
inline constexpr std::string_view defaultSecondaryCategory = "VIEWABLE";
inline constexpr std::string_view defaultValueType = "String";
/// Ids that a server gives begin here.
inline constexpr std::int64_t firstGivenId = 10'000'001;

}  // namespace vantry_sim
