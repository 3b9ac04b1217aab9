#pragma once

#include <string>
#include <string_view>

/// Names as they are in paths on a server, where the ten characters |\/<>:"?*% have a meaning of their own.
namespace vtdirect_cli {

/// Each of the ten characters as %hh; all else stays.
[[nodiscard]] std::string EscapedName(std::string_view name);

/// One way of writing for all ways that mean the same name: the ten characters escaped, in small letters.
[[nodiscard]] std::string NormalizedName(std::string_view name);

}  // namespace vtdirect_cli
