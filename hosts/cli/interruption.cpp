#include "hosts/cli/interruption.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <ctime>
#include <thread>

namespace vtdirect_cli {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr long kGraceNanoseconds = 250'000'000;

struct State {
  std::atomic<int> signal{0};
  std::recursive_mutex mutex;
  std::list<std::function<void()>*> undos;
};

// Signals belong to the process, and so does this state. It is never destroyed: the watch may still look at
// it while the process ends.
State& TheState() {
  static State* const state = new State;
  return *state;
}

[[nodiscard]] bool IsIgnored(int signal) {
  struct sigaction action = {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void UndoAll() {
  State& state = TheState();
  for (auto undo = state.undos.rbegin(); undo != state.undos.rend(); ++undo) (**undo)();
}

void Watch(sigset_t signals) {
  int signal = 0;
  if (sigwait(&signals, &signal) != 0) return;
  State& state = TheState();
  state.signal = signal;
  const timespec grace{0, kGraceNanoseconds};
  static_cast<void>(sigtimedwait(&signals, nullptr, &grace));
  const std::lock_guard lock(state.mutex);
  UndoAll();
  _exit(128 + signal);
}

}  // namespace

void WatchForInterruption() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : kSignals) {
    if (!IsIgnored(signal)) sigaddset(&signals, signal);
  }
  static_cast<void>(TheState());
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread(Watch, signals).detach();
}

bool Interrupted() {
  return TheState().signal != 0;
}

int InterruptionStatus() {
  const int signal = TheState().signal;
  return signal == 0 ? 0 : 128 + signal;
}

InterruptionHold::InterruptionHold() : lock_(TheState().mutex) {}

CleanUp::CleanUp(std::function<void()> undo) : undo_(std::move(undo)) {
  const std::lock_guard lock(TheState().mutex);
  place_ = TheState().undos.insert(TheState().undos.end(), &undo_);
}

CleanUp::~CleanUp() {
  const std::lock_guard lock(TheState().mutex);
  if (!undo_) return;
  TheState().undos.erase(place_);
  undo_();
}

void CleanUp::Dismiss() {
  const std::lock_guard lock(TheState().mutex);
  if (!undo_) return;
  TheState().undos.erase(place_);
  undo_ = nullptr;
}

}  // namespace vtdirect_cli
