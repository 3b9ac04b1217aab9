#pragma once

#include <optional>

#include "hosts/cli/failures/exit_code.h"

namespace vtdirect_cli {

/// For whoever builds or packages the program: what is installed beside it comes from its own tables. Writes the text
/// that "--generate WHAT" names to standard output, or with "--generate manual-pages DIR" the page of each command
/// into a directory, which is made.
/// @return nothing when the words ask for no such thing, and otherwise how it went
[[nodiscard]] std::optional<ExitCode> Generate(int argc, const char* const* argv);

}  // namespace vtdirect_cli
