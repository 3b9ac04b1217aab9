#pragma once

#include "hosts/cli/commands/command.h"

namespace vtdirect_cli {

/// The option of a command that changes something, here or on a server: it looks as ever, refuses what it would
/// refuse, says what it would do, and ends there.
/// @param help  one sentence; it has to live as long as the process
[[nodiscard]] inline OptionRow DryRunOption(
    const char* help = "Say what would be done, and change nothing.") {
  return {.name = "dry-run", .help = help};
}

/// Whether the option was given.
[[nodiscard]] inline bool IsDryRun(const Arguments& arguments) {
  return arguments.Has("dry-run");
}

/// The member by which an object says that nothing was done. When it is there, its value is true.
/// @param help  what the other members are then; it has to live as long as the process
[[nodiscard]] inline MemberRow DryRunMember(const char* help) {
  return {"dry_run", MemberType::Flag, "with --dry-run", help};
}

}  // namespace vtdirect_cli
