#pragma once

#include <vtdirect/platform/http_observer.h>

#include <chrono>
#include <optional>
#include <string_view>

namespace vtdirect_cli {

/// What the line Retry-After of an answer asks for, as a number of seconds or as the date of its end.
/// @param answerHead  status line and header lines
/// @param now         the time that a date is compared with; a date that is past asks for 0 seconds
/// @return nothing if there is no such line, or none that can be read
[[nodiscard]] std::optional<std::chrono::seconds> PauseAskedIn(std::string_view answerHead,
                                                               std::chrono::system_clock::time_point now);

/// Notes how long a server that is too busy asks to be left alone, for the thread whose exchange it is.
void NoteAskedPause(const du::http::ObservedExchange& exchange);

/// What the last answer of a server that was too busy has asked this thread for, once: the next call gives nothing
/// until there is another such answer.
[[nodiscard]] std::optional<std::chrono::seconds> TakeAskedPause();

}  // namespace vtdirect_cli
