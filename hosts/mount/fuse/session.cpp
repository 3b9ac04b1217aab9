#include "hosts/mount/fuse/session.h"

#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "hosts/mount/fuse/operations.h"
#include "hosts/mount/fuse/parallel_lookups.h"

extern char** environ;

namespace vtdirect_mount {
namespace {

constexpr int wakeUp = SIGUSR1;  // lets libfuse's loop see that it is to end
constexpr int endOfWatch = SIGUSR2;

void DoNothing(int /*signal*/) {}

[[nodiscard]] sigset_t KeptSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, endOfWatch}) sigaddset(&signals, signal);
  return signals;
}

// A mount whose process was killed stays, and answers everything with ENOTCONN.
void ClearAwayDeadMount(const std::string& directory) {
  struct stat status = {};
  if (stat(directory.c_str(), &status) == 0 || errno != ENOTCONN) return;
  std::string place = directory;
  char program[] = "fusermount3";
  char unmount[] = "-uz";
  char* const words[] = {program, unmount, place.data(), nullptr};
  pid_t process = 0;
  if (posix_spawnp(&process, program, nullptr, nullptr, words, environ) == 0) waitpid(process, nullptr, 0);
}

[[nodiscard]] fuse_session* NewSession(Mount& mount) {
  const bool writes = mount.writing() != nullptr;
  fuse_args arguments = FUSE_ARGS_INIT(0, nullptr);
  for (const char* argument : {"vtdirect-mount", "-o", writes ? "rw" : "ro", "-o",
                               "nosuid,nodev,noatime,fsname=vtdirect,subtype=vtdirect"}) {
    if (fuse_opt_add_arg(&arguments, argument) != 0) return nullptr;
  }
  const fuse_lowlevel_ops operations = Operations(writes);
  fuse_session* const session = fuse_session_new(&arguments, &operations, sizeof operations, &mount);
  fuse_opt_free_args(&arguments);
  return session;
}

}  // namespace

void Session::KeepSignals() {
  const sigset_t signals = KeptSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  struct sigaction action = {};
  action.sa_handler = DoNothing;
  sigaction(wakeUp, &action, nullptr);
  action.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &action, nullptr);
}

Session::Opened Session::Open(Mount& mount) {
  const std::string& directory = mount.settings().directory;
  ClearAwayDeadMount(directory);
  fuse_session* const session = NewSession(mount);
  if (session == nullptr) return {"libfuse can't begin"};
  if (fuse_session_mount(session, directory.c_str()) != 0) {
    const std::string why = errno == 0 ? "" : std::string(": ") + std::strerror(errno);
    fuse_session_destroy(session);
    return {"cannot mount at " + directory + why};
  }
  if (!AskForParallelLookups(session)) mount.log().Write("names of a directory are looked up one by one");
  mount.SetSession(session);
  return {"", std::unique_ptr<Session>(new Session(mount, session))};
}

Session::~Session() {
  fuse_session_unmount(session_);
  fuse_session_destroy(session_);
}

void Session::WatchSignals(pthread_t loop) {
  const sigset_t signals = KeptSignals();
  int signal = 0;
  while (sigwait(&signals, &signal) == 0 && signal != endOfWatch) {
    if (signal == SIGHUP) {
      mount_.Refresh();
      continue;
    }
    mount_.log().Write(std::string("ends by signal ") + strsignal(signal));
    isToEnd_ = true;
    fuse_session_exit(session_);
    pthread_kill(loop, wakeUp);
  }
}

bool Session::Run() {
  std::thread watch([this, loop = pthread_self()] { WatchSignals(loop); });
  fuse_loop_config* const config = fuse_loop_cfg_create();
  const int status = fuse_session_loop_mt(session_, config);
  fuse_loop_cfg_destroy(config);
  pthread_kill(watch.native_handle(), endOfWatch);
  watch.join();
  fuse_session_unmount(session_);
  // A loop that was told to end may be interrupted in the middle of reading a request.
  return status >= 0 || isToEnd_;
}

}  // namespace vtdirect_mount
