#pragma once

#include <span>

namespace vtdirect_cli {

/// What the program tells its caller by its exit status. Scripts rely on the numbers: none ever changes.
enum class ExitCode : int {
  Ok = 0,
  Failure = 1,
  Usage = 2,
  CannotConnect = 3,
  AuthenticationRefused = 4,
  ServerUnsupported = 5,
  NotFound = 6,
  DownloadFailed = 7,
  LocalFile = 8,
  ServerNotListed = 9,
  Outdated = 10,
  Incomplete = 11,
  TimedOut = 12,
  Interrupted = 130,
};

struct ExitCodeRow {
  ExitCode code;
  const char* name;     ///< as --json gives it
  const char* meaning;  ///< for the help text and the manual page
};

/// Every exit code, by rising number. The help text, the manual page and --json read this table.
[[nodiscard]] std::span<const ExitCodeRow> ExitCodes();

/// Which of two tells more of what went wrong, for a command that works on several objects: a server that
/// can't be used counts above an object that is not there, and that above one that is out of date.
[[nodiscard]] ExitCode Worse(ExitCode one, ExitCode other);

/// Its name, "not-found".
[[nodiscard]] const char* NameOf(ExitCode code);

}  // namespace vtdirect_cli
