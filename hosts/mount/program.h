#pragma once

namespace vtdirect_mount {

/// Runs the program to its end.
/// @return the exit status, as that of vtdirect
[[nodiscard]] int RunProgram(int argc, const char* const* argv);

}  // namespace vtdirect_mount
