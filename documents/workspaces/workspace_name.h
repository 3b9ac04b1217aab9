#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace lxservices::cms_interface::vantry {

/// A name for a temporary workspace: the prefix and eight lower-case hexadecimal digits that a generator,
/// made afresh on each call, draws from the time. Two calls within one second give the same name; the search
/// for a free name counts on that. Pure.
/// @param seconds  time since 1970, its low 32 bits
[[nodiscard]] std::string MakeWorkspaceName(std::string_view prefix, std::uint32_t seconds);

}  // namespace lxservices::cms_interface::vantry
