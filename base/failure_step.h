#pragma once

#include <cstdint>

#include "base/failure.h"
#include "platform/failure_detail.h"

/// What a thread is doing, for the failures that it reports.
namespace lxservices::cms_interface {

/// Names the step that runs until the object goes; then the step around it counts again. Does nothing when
/// nobody collects on this thread.
class FailureStep {
 public:
  /// @param words  a literal: "check out", "fetch the nonce"
  explicit FailureStep(const char* words) noexcept;
  ~FailureStep();
  FailureStep(const FailureStep&) = delete;
  FailureStep& operator=(const FailureStep&) = delete;

 private:
  const char* before_;
};

/// While it lives, what this thread reports is said aside: it does not decide how the call ends. For
/// clean-up, and for looks whose failure leaves a default.
class FailureAside {
 public:
  FailureAside() noexcept;
  ~FailureAside();
  FailureAside(const FailureAside&) = delete;
  FailureAside& operator=(const FailureAside&) = delete;
};

/// Remembers how far this thread has reported, to tell later whether it has reported since; what was said
/// aside does not count.
class FailureMark {
 public:
  FailureMark() noexcept;
  [[nodiscard]] bool ReportedSince() const noexcept;

 private:
  std::uint64_t count_;
};

/// Why something failed, where the step and the rest are known already.
struct Reason {
  FailureKind kind = FailureKind::Refused;
  bool follows = false;
  du::http::FailureReport found = {};  ///< its cause, if it is known
};

/// The reason of what only follows from the failure that this thread reported last.
[[nodiscard]] Reason Follows() noexcept;

/// The reason of what follows from a failure since the mark; without one, a reason of its own.
[[nodiscard]] Reason FollowsOr(const FailureMark& mark, FailureKind kind) noexcept;

/// Reports a reason for the step that runs. For a failure that is traced see base/failure_trace.h.
void ReportReason(const Reason& reason);

}  // namespace lxservices::cms_interface
