#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace lxservices::cms_interface::vantry {

/// A server's release. Compared as one list, the first difference deciding. The numbers are unsigned, so a
/// server that reports a negative number counts as very new.
struct ServerVersion {
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t servicePack = 0;
  std::uint32_t cps = 0;
  friend auto operator<=>(const ServerVersion&, const ServerVersion&) = default;
};

/// The oldest release that the library works with.
inline constexpr ServerVersion MinimumServerVersion{11, 0, 30, 0};
/// The oldest release whose translation add-on the library works with.
inline constexpr ServerVersion MinimumTranslationVersion{11, 1, 10, 1};

/// The text form that users know a release under: "11.2 F000", "12.0 M005 CPS 3".
[[nodiscard]] std::string FormatServerVersion(const ServerVersion& version);

}  // namespace lxservices::cms_interface::vantry
