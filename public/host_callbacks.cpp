#include "public/host_callbacks.h"

#include "public/manager_state.h"
#include "public/vt_direct_manager.h"

namespace lxservices::cms_interface {

bool ForwardAuth(const char* url) {
  const auto callback = TheManagerState().authCallback.load();
  return callback != nullptr && callback(url);
}

bool RunTask(std::function<void()> task) {
  if (const auto runner = TheManagerState().taskRunner.load()) return runner(task);
  task();
  return true;
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
