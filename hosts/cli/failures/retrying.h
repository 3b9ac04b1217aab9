#pragma once

#include <chrono>
#include <optional>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/result.h"

namespace vtdirect_cli {

/// How often a question is repeated unless --retries says otherwise.
inline constexpr unsigned usualRetries = 3;

/// The option that says how often a question is repeated.
[[nodiscard]] OptionRow RetriesOption();

/// The value of --retries.
/// @return a usage failure for one that can't be meant
[[nodiscard]] Result<unsigned> ReadRetries(const Arguments& arguments);

/// Whether a question that failed so may be answered when it is asked again: its answer broke off, or the server
/// said that it can't answer now. Only for a question: what changes something is never repeated.
[[nodiscard]] bool MayBeAskedAgain(const Failure& failure);

/// How long to wait before a question is repeated for the first time (0), the second (1) and so on: each time
/// twice as long, but not for ever.
[[nodiscard]] std::chrono::milliseconds PauseBefore(unsigned repetition);

/// How long to wait before a question is repeated. A server that was too busy may have asked for more than usual,
/// and gets it.
/// @param asked  what this server has asked for, if it has
/// @return nothing if it asks for more than a minute: nobody waits so long, and to come back earlier than it says
///         would do harm
[[nodiscard]] std::optional<std::chrono::milliseconds> PauseFor(const Failure& failure, unsigned repetition,
                                                                std::optional<std::chrono::seconds> asked);

/// Waits for so long.
/// @return false at once when a signal comes
[[nodiscard]] bool Pause(std::chrono::milliseconds time);

/// Whether a question is to be asked once more. Waits before it says so, as long as the server has asked this
/// thread to.
/// @param repetition  how often it was repeated already
[[nodiscard]] bool IsToBeRepeated(const Failure& failure, unsigned repetition, unsigned retries);

}  // namespace vtdirect_cli
