#pragma once

#include <vtdirect/outcome.h>

#include <optional>
#include <vector>

/// Why the library's calls failed, as values. The program keeps one collector for all that a command asks.
namespace vtdirect_cli {

using Reason = VtDirectManager::Failure;

/// Collects for this thread while it lives. One at a time.
class ReasonCollector {
 public:
  ReasonCollector();
  ~ReasonCollector();
  ReasonCollector(const ReasonCollector&) = delete;
  ReasonCollector& operator=(const ReasonCollector&) = delete;

 private:
  VtDirectManager::Outcome outcome_;
};

/// What was collected since the last call of ForgetReasons, oldest first.
[[nodiscard]] std::vector<Reason> Reasons();

/// What ended the last call that failed; nothing when none did.
[[nodiscard]] std::optional<Reason> LastReason();

void ForgetReasons();

/// The last reason for a reader: "check in: conflict, HTTP 409: what the server said"; empty without one.
[[nodiscard]] std::string WordsOfLastReason();

/// Whether a request that stores, creates, checks out, in or anything else but bring bytes to the server may
/// have been carried out although it failed.
[[nodiscard]] bool ChangeMayHaveHappened();

/// Whether a local file could not be read or written.
[[nodiscard]] bool LocalFileFailed();

/// Whether a workspace could not be deleted.
[[nodiscard]] bool WorkspaceStays();

}  // namespace vtdirect_cli
