#pragma once

#include <string>
#include <vector>

namespace vtdirect_cli {

/// Runs a command line by the shell, with these words after it, at the program's own terminal, and waits for
/// its end without a limit. Signals are as usual for it. Ctrl-C at the terminal is its business alone until it
/// ends; any other signal ends this program as ever, and leaves what was started.
/// @param commandLine  for the shell: "vi", "code --wait"
/// @return its exit status, 128 plus the number of a signal, or -1 if it can't be started
[[nodiscard]] int RunInForeground(const std::string& commandLine, const std::vector<std::string>& words);

}  // namespace vtdirect_cli
