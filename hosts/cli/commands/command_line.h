#pragma once

#include <optional>
#include <string>

#include "hosts/cli/commands/command.h"

namespace vtdirect_cli {

/// What the command line asks for: a command, or a text to be shown, or a failure.
struct CommandLine {
  const CommandRow* command = nullptr;
  Arguments arguments;
  std::string text;
  std::optional<Failure> failure;
  std::string named;  ///< the command that the line names, also one that is used wrongly; empty if none is
  bool json = false;  ///< whether a failure of the line is to be told as JSON
};

/// Reads the command line by the table of commands. Does nothing else.
[[nodiscard]] CommandLine ParseCommandLine(int argc, const char* const* argv);

/// "vtdirect" with its version.
[[nodiscard]] std::string VersionText();

}  // namespace vtdirect_cli
