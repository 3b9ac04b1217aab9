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

/// The manual page of one command: vtdirect-get.1.
[[nodiscard]] std::string ManualPage(const CommandRow& row);

/// What that page is called, without its section: "vtdirect-xliff-put".
[[nodiscard]] std::string NameOfPage(const CommandRow& row);

/// Whether the page is made from the tables. That of `mount` is the page of the program that it starts, which comes
/// with that.
[[nodiscard]] bool HasOwnPage(const CommandRow& row);

/// The completion for bash, from the same tables: vtdirect.bash-completion.
[[nodiscard]] std::string BashCompletion();

/// The same for zsh: vtdirect.zsh-completion.
[[nodiscard]] std::string ZshCompletion();

/// The same for fish: vtdirect.fish-completion.
[[nodiscard]] std::string FishCompletion();

/// The description of what --json prints, from the same tables, in Markdown: docs/json-output.md.
[[nodiscard]] std::string JsonDocument();

}  // namespace vtdirect_cli
