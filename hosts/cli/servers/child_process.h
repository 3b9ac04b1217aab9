#pragma once

#include <string>

namespace vtdirect_cli {

/// How a program that was started came to its end.
enum class ChildEnd { Ended, TooLate, TooMuch, Interrupted, NotStarted };

struct ChildResult {
  ChildEnd end = ChildEnd::NotStarted;
  int status = -1;     ///< of waitpid, when it has ended by itself
  std::string output;  ///< what it wrote on standard output
};

/// Runs a command line by the shell, in a process group of its own, which is killed as a whole when it must
/// end. The caller ignores SIGPIPE, as the program does: a command may end before it has read its input. It
/// gets `input` and then the end of the input, signals as usual, and the program's standard error.
/// @param seconds  longest time
[[nodiscard]] ChildResult RunShell(const std::string& commandLine, const std::string& input, long seconds);

}  // namespace vtdirect_cli
