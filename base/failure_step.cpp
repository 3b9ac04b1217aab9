#include "base/failure_step.h"

#include <utility>

#include "base/failure_log.h"
#include "base/failure_thread.h"

namespace lxservices::cms_interface {

FailureStep::FailureStep(const char* words) noexcept : before_(ThisFailureThread().step) {
  FailureThread& thread = ThisFailureThread();
  if (thread.innermost != nullptr) thread.step = words;
}

FailureStep::~FailureStep() {
  ThisFailureThread().step = before_;
}

FailureAside::FailureAside() noexcept {
  ++ThisFailureThread().asides;
}

FailureAside::~FailureAside() {
  --ThisFailureThread().asides;
}

FailureMark::FailureMark() noexcept : count_(ThisFailureThread().reports) {}

bool FailureMark::ReportedSince() const noexcept {
  return ThisFailureThread().reports != count_;
}

Reason Follows() noexcept {
  return {ThisFailureThread().lastKind, true};
}

Reason FollowsOr(const FailureMark& mark, FailureKind kind) noexcept {
  return mark.ReportedSince() ? Follows() : Reason{kind, false};
}

void ReportReason(const Reason& reason) {
  if (!FailuresAreCollected()) return;
  Failure failure;
  failure.kind = reason.kind;
  failure.follows = reason.follows;
  failure.platformDetail = static_cast<int>(reason.found.detail);
  failure.platformText = reason.found.text;
  ReportFailure(std::move(failure));
}

}  // namespace lxservices::cms_interface
