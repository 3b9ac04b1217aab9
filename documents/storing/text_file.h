#pragma once

#include <string>
#include <string_view>

namespace lxservices::cms_interface::vantry {

/// Writes a text to a temporary file, byte for byte.
/// @return its path, which the caller removes; empty when the file cannot be made or written, and then
/// nothing is
///         left behind and nothing is traced
[[nodiscard]] std::string WriteTextFile(const char* stem, const char* extension, std::string_view text);

}  // namespace lxservices::cms_interface::vantry
