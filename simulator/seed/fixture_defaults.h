#pragma once

#include <cstdint>
#include <string_view>

namespace vantry_sim {

// What a state file means where it says nothing. Its reader and its writer go by the same.

inline constexpr std::string_view kDefaultKind = "Product";
inline constexpr std::string_view kDefaultOrganization = "Organization";
inline constexpr std::string_view kDefaultService = "dynamic";
inline constexpr std::string_view kDefaultCategory = "iso";
inline constexpr std::string_view kDefaultSubCategory = "FENLET";
inline constexpr std::string_view kDefaultApplication = "MERIDOX";
inline constexpr std::string_view kDefaultAuthAppVersion = "310";
inline constexpr std::string_view kDefaultNdVersion = "J-01";
inline constexpr std::string_view kDefaultFileName = "{$CAD_NAME}";
inline constexpr std::string_view kDefaultSecondaryCategory = "VIEWABLE";
inline constexpr std::string_view kDefaultValueType = "String";
/// Ids that a server gives begin here.
inline constexpr std::int64_t kFirstGivenId = 10'000'001;

}  // namespace vantry_sim
