#pragma once

#include <vtdirect/outcome.h>

#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/failures/failure.h"

/// Why the library's calls failed, as values. The program keeps one collector for all that a command asks, and
/// one for each of several tasks that run at the same time.
namespace vtdirect_cli {

/// Collects for this thread while it lives. What the functions below tell is what the innermost one of the thread
/// has collected; on a thread without one they tell nothing.
class ReasonCollector {
 public:
  ReasonCollector();
  ~ReasonCollector();
  ReasonCollector(const ReasonCollector&) = delete;
  ReasonCollector& operator=(const ReasonCollector&) = delete;

 private:
  VtDirectManager::Outcome outcome_;
  VtDirectManager::Outcome* outer_;
};

/// What was collected since the last call of ForgetReasons, oldest first.
[[nodiscard]] std::vector<Reason> Reasons();

/// What ended the last call that failed; nothing if none did. It says that it may have happened if any of the
/// requests before it that change something may.
[[nodiscard]] std::optional<Reason> LastReason();

/// Whether what the server was asked for is unknown: a call failed, and not because nothing was there or several
/// were. What it gave is no answer then.
[[nodiscard]] bool AnswerIsMissing(const VtDirectManager::Outcome& outcome);

/// Whether one of several questions, whatever came of the others, was not answered: in time, readably, and by
/// something else than a 5xx. What the library made of it is no answer.
[[nodiscard]] bool AQuestionFailed(const VtDirectManager::Outcome& outcome);

/// Whether what was told since the last call of ForgetReasons rests on an answer that could not be read. The
/// library calls that a success, with blanks in the place of what the server has.
[[nodiscard]] bool LastAnswerWasBroken();

/// The failure with the last reason, unless it has one.
[[nodiscard]] Failure WithReason(Failure failure);

void ForgetReasons();

/// A reason for a reader: "check in: conflict, HTTP 409: what the server said".
[[nodiscard]] std::string WordsOf(const Reason& reason);

/// The last reason for a reader; empty without one.
[[nodiscard]] std::string WordsOfLastReason();

/// A message with the last reason in brackets.
[[nodiscard]] std::string WithWords(const std::string& message);

/// Whether a request that changes something (all but the upload of bytes) may have been carried out although it
/// failed.
[[nodiscard]] bool ChangeMayHaveHappened();

/// Whether such a request may be carried out even after the server was asked for its state: no answer came to it, or
/// only one of a proxy that has none itself. A server that has answered by itself is done with the request.
[[nodiscard]] bool ChangeMayStillHappen();

/// Whether a local file could not be read or written.
[[nodiscard]] bool LocalFileFailed();

/// Why a temporary workspace could not be deleted; nothing if none was left.
[[nodiscard]] std::optional<Reason> WhyWorkspaceStays();

}  // namespace vtdirect_cli
