#pragma once

#include <string>
#include <string_view>

namespace lxservices::cms_interface::vantry {

/// Writes a text to a temporary file that has been made for it, byte for byte.
/// @param path  the file's; empty when it could not be made
/// @return the path, which the caller removes; empty when the file cannot be written, and then it is removed
///         and nothing is traced
[[nodiscard]] std::string WriteTextFile(const std::string& path, std::string_view text);

}  // namespace lxservices::cms_interface::vantry
