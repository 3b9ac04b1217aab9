#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "base/failure.h"

/// Who collects the failures of a thread. Nothing here makes a request, and no host's code runs.
namespace lxservices::cms_interface {

/// What one host's object has collected. Any thread may read it while others write.
class FailureLog {
 public:
  /// Of more entries than this the first half and the last half stay.
  static constexpr std::size_t maximumEntries = 64;

  void Add(const Failure& failure);
  void Clear();
  [[nodiscard]] std::vector<Failure> Entries() const;
  [[nodiscard]] std::size_t Dropped() const;

 private:
  mutable std::mutex mutex_;
  std::vector<Failure> entries_;
  std::size_t dropped_ = 0;
};

/// Enters a log on this thread for as long as the object lives; the logs that are entered already go on
/// collecting. Destroyed on the thread that made it.
class FailureListener {
 public:
  explicit FailureListener(std::weak_ptr<FailureLog> log);
  ~FailureListener();
  FailureListener(const FailureListener&) = delete;
  FailureListener& operator=(const FailureListener&) = delete;

  [[nodiscard]] const std::weak_ptr<FailureLog>& log() const { return log_; }
  [[nodiscard]] const FailureListener* outer() const { return outer_; }

 private:
  std::weak_ptr<FailureLog> log_;
  FailureListener* outer_;
};

/// The logs of a thread, to be entered on another one for a task.
using FailureLogs = std::vector<std::weak_ptr<FailureLog>>;

/// The logs that this thread reports to now, innermost first; empty when nobody collects.
[[nodiscard]] FailureLogs CurrentFailureLogs();

/// Whether anybody collects on this thread.
[[nodiscard]] bool FailuresAreCollected() noexcept;

/// Enters the logs on this thread for as long as the object lives, as far as they are not entered here
/// already: a task may run on the thread that posted it, inside the very call.
class FailureListeners {
 public:
  explicit FailureListeners(const FailureLogs& logs);
  ~FailureListeners();
  FailureListeners(const FailureListeners&) = delete;
  FailureListeners& operator=(const FailureListeners&) = delete;

 private:
  std::vector<std::unique_ptr<FailureListener>> listeners_;
};

/// Adds an entry to every log of this thread that still lives. An empty step is filled in with the one that
/// runs (base/failure_step.h).
void ReportFailure(Failure failure);

}  // namespace lxservices::cms_interface
