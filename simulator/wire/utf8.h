#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vantry_sim {

/// The length of the well-formed UTF-8 character at the head of the text; 0 for anything else, an empty text
/// included.
std::size_t Utf8Length(std::string_view text);

/// Whether all of the text is well-formed.
bool IsUtf8(std::string_view text);

/// The text with U+FFFD in the place of every byte that is no UTF-8.
std::string ValidUtf8(std::string_view text);

/// Appends a code point up to 0x10FFFF.
void AppendUtf8(std::string& text, std::uint32_t code);

}  // namespace vantry_sim
