#pragma once

#include <string_view>

namespace vtdirect_cli {

/// Whether a text is of a pattern's form, as a shell has it for file names: "*" stands for any number of
/// characters, "?" for one, and every other character for itself, small or capital letters of ASCII alike.
/// Takes at most the product of both lengths in steps.
[[nodiscard]] bool IsOfPattern(std::string_view text, std::string_view pattern);

}  // namespace vtdirect_cli
