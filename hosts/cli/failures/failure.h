#pragma once

#include <vtdirect/outcome.h>

#include <optional>
#include <span>
#include <string>

#include "hosts/cli/failures/exit_code.h"

namespace vtdirect_cli {

/// Why a call of the library failed.
using Reason = VtDirectManager::Failure;

/// What a failure is called with --json. The exit status says less: several classes share one.
enum class FailureClass {
  OfExitCode,   ///< has the name of its exit status
  Locked,       ///< somebody else has the document checked out
  Refused,      ///< the server answered and said no
  Unavailable,  ///< the server answered that it can't answer now, or broke off
  Conflict,     ///< the state of the object does not allow it
  LostAnswer    ///< a change may have been carried out although it failed
};

/// A failure as it is reported.
struct Failure {
  ExitCode code = ExitCode::Failure;
  /// What happened and what is true now, without a closing full stop or line feed.
  std::string message;
  /// What to do next, in the same form; empty if the message tells it, or nobody can do anything.
  std::string advice = {};
  /// The call of the library that failed; nothing if none did.
  std::optional<Reason> reason = std::nullopt;
  /// The class if it does not follow from the reason: the program looked first and asked for nothing.
  FailureClass failureClass = FailureClass::OfExitCode;
  /// Of a command that was ended from outside: whether a change was sent whose answer had not come. Nothing if
  /// that is up to the reason.
  std::optional<bool> changeIsOpen = std::nullopt;
  /// Whether the message says already that nothing was done; see WithNothing.
  bool saysNothingWasDone = false;

  /// Message and advice, for a reader.
  [[nodiscard]] std::string Text() const { return advice.empty() ? message : message + "; " + advice; }
};

/// The failure with "nothing was sent" in its message, for the word "sent"; as it is if the message says already
/// that nothing was done.
[[nodiscard]] Failure WithNothing(const char* done, Failure failure);

/// One class of failures.
struct FailureClassRow {
  const char* name;
  bool retryable;       ///< whether the same command can be given again, some time later, and may do then
  const char* meaning;  ///< for the description of the JSON
};

/// The classes that are no names of exit statuses.
[[nodiscard]] std::span<const FailureClassRow> FailureClasses();

/// Whether a change may have been carried out although the command failed; nothing if the command had not come
/// to any call that could tell.
[[nodiscard]] std::optional<bool> MayHaveHappened(const Failure& failure);

/// The class of a failure, by its exit status and its reason. The text lives as long as the process.
[[nodiscard]] const char* ClassOf(const Failure& failure);

/// Whether the same command can be given again as it is, and may succeed then. False if a change may have been
/// carried out: whoever gives the command again has to look first.
[[nodiscard]] bool IsRetryable(const Failure& failure);

}  // namespace vtdirect_cli
