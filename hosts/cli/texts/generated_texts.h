#pragma once

#include <string>

#include "hosts/cli/commands/command.h"

namespace vtdirect_cli {

/// The help text of a command, or of the whole program for null, set for eighty columns.
[[nodiscard]] std::string HelpText(const CommandRow* command);

/// The help text of a group of commands.
[[nodiscard]] std::string HelpText(const GroupRow& group);

/// The manual page, as the tables of commands, options and exit codes make it: vtdirect.1.
[[nodiscard]] std::string ManualPage();

/// The completion for bash, from the same tables: vtdirect.bash-completion.
[[nodiscard]] std::string BashCompletion();

/// The same for zsh: vtdirect.zsh-completion.
[[nodiscard]] std::string ZshCompletion();

/// The same for fish: vtdirect.fish-completion.
[[nodiscard]] std::string FishCompletion();

/// The description of what --json prints, from the same tables, in Markdown: docs/json-output.md.
[[nodiscard]] std::string JsonDocument();

}  // namespace vtdirect_cli
