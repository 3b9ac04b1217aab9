#include "public/host_callbacks.h"

#include <utility>

#include "base/failure_log.h"
#include "base/failure_step.h"
#include "public/manager_state.h"
#include "public/vt_direct_manager.h"

namespace lxservices::cms_interface {
namespace {

// The task reports to those who collect now, on whatever thread it runs, as far as they still live then.
std::function<void()> WithFailureLogs(std::function<void()> task) {
  if (!FailuresAreCollected() || !task) return task;
  return [logs = CurrentFailureLogs(), task = std::move(task)] {
    const FailureListeners listeners(logs);
    task();
  };
}

}  // namespace

bool ForwardAuth(const char* url) {
  const auto callback = TheManagerState().authCallback.load();
  return callback != nullptr && callback(url);
}

bool RunTask(std::function<void()> task) {
  task = WithFailureLogs(std::move(task));
  const auto runner = TheManagerState().taskRunner.load();
  if (runner == nullptr) {
    task();
    return true;
  }
  const bool isTaken = runner(task);
  const FailureStep step("hand the task over");
  if (!isTaken) ReportReason({FailureKind::Refused});
  return isTaken;
}

}  // namespace lxservices::cms_interface

namespace VtDirectManager {

void RegisterAuth(bool (*callback)(const char* url)) {
  lxservices::cms_interface::TheManagerState().authCallback = callback;
}

void RegisterTaskRunner(bool (*runner)(std::function<void()>)) {
  lxservices::cms_interface::TheManagerState().taskRunner = runner;
}

}  // namespace VtDirectManager
