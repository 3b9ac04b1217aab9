#pragma once

namespace vtdirect_cli {

/// The whole program: reads the command line, sets the library up, runs the command and gives the exit
/// status.
int RunProgram(int argc, const char* const* argv);

}  // namespace vtdirect_cli
