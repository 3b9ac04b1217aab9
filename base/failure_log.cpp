#include "base/failure_log.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "base/failure_thread.h"

namespace lxservices::cms_interface {
namespace {

// Needs no construction, so that a look at it is all that a thread without a listener pays.
constinit thread_local FailureThread thisThread;

bool IsSame(const std::weak_ptr<FailureLog>& left, const std::weak_ptr<FailureLog>& right) {
  return !left.owner_before(right) && !right.owner_before(left);
}

bool IsEntered(const std::weak_ptr<FailureLog>& log) {
  for (const FailureListener* at = thisThread.innermost; at != nullptr; at = at->outer()) {
    if (IsSame(at->log(), log)) return true;
  }
  return false;
}

}  // namespace

FailureThread& ThisFailureThread() noexcept {
  return thisThread;
}

void FailureLog::Add(const Failure& failure) {
  const std::lock_guard lock(mutex_);
  if (entries_.size() == maximumEntries) {
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(maximumEntries / 2));
    ++dropped_;
  }
  entries_.push_back(failure);
}

void FailureLog::Clear() {
  const std::lock_guard lock(mutex_);
  entries_.clear();
  dropped_ = 0;
}

std::vector<Failure> FailureLog::Entries() const {
  const std::lock_guard lock(mutex_);
  return entries_;
}

std::size_t FailureLog::Dropped() const {
  const std::lock_guard lock(mutex_);
  return dropped_;
}

FailureListener::FailureListener(std::weak_ptr<FailureLog> log)
    : log_(std::move(log)), outer_(std::exchange(thisThread.innermost, this)) {}

// Not always the innermost: a host may keep its objects in members, which go in an order of their own.
FailureListener::~FailureListener() {
  FailureListener** at = &thisThread.innermost;
  while (*at != nullptr && *at != this) at = &(*at)->outer_;
  if (*at == this) *at = outer_;
}

FailureLogs CurrentFailureLogs() {
  FailureLogs logs;
  for (const FailureListener* at = thisThread.innermost; at != nullptr; at = at->outer()) {
    logs.push_back(at->log());
  }
  return logs;
}

bool FailuresAreCollected() noexcept {
  return thisThread.innermost != nullptr;
}

FailureListeners::FailureListeners(const FailureLogs& logs) {
  for (const auto& log : logs) {
    if (!IsEntered(log)) listeners_.push_back(std::make_unique<FailureListener>(log));
  }
}

FailureListeners::~FailureListeners() {
  while (!listeners_.empty()) listeners_.pop_back();
}

void ReportFailure(Failure failure) {
  if (thisThread.innermost == nullptr) return;
  if (failure.step.empty() && thisThread.step != nullptr) failure.step = thisThread.step;
  failure.aside = thisThread.asides > 0;
  if (!failure.aside) {
    ++thisThread.reports;
    thisThread.lastKind = failure.kind;
  }
  for (const FailureListener* at = thisThread.innermost; at != nullptr; at = at->outer()) {
    if (const auto log = at->log().lock()) log->Add(failure);
  }
}

}  // namespace lxservices::cms_interface
