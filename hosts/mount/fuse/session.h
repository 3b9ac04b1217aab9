#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "hosts/mount/fuse/mount.h"

namespace vtdirect_mount {

/// The kernel's side of a mount.
class Session {
 public:
  /// Keeps SIGINT, SIGTERM and SIGHUP for Run. To be called before the process has a second thread.
  static void KeepSignals();

  /// A session, or why there is none.
  struct Opened {
    std::string fault;  ///< empty with a session
    std::unique_ptr<Session> session = nullptr;
  };
  /// Mounts the tree. What a killed mount has left at the directory is cleared away first.
  [[nodiscard]] static Opened Open(Mount& mount);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Answers the kernel until the tree is unmounted, or SIGINT or SIGTERM comes, and unmounts then. SIGHUP
  /// refreshes.
  /// @return whether it ended as it should
  [[nodiscard]] bool Run();

 private:
  Session(Mount& mount, fuse_session* session) : mount_(mount), session_(session) {}
  void WatchSignals(pthread_t loop);

  Mount& mount_;
  fuse_session* session_;
  std::atomic<bool> isToEnd_ = false;  ///< by a signal
};

}  // namespace vtdirect_mount
