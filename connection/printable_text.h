#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lxservices::cms_interface::vantry {

/// A text from a server, fit to be shown: valid UTF-8 of at most `longest` bytes. Control characters, line
/// ends and characters that turn or hide the text around them become a blank; bytes that are no UTF-8 become
/// "?", but for the beginning of a character that the end of the text cuts, which is dropped. Pure.
[[nodiscard]] std::string PrintableText(std::string_view text, std::size_t longest);

}  // namespace lxservices::cms_interface::vantry
