#include "hosts/cli/program/interruption.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <ctime>
#include <thread>
#include <utility>

namespace vtdirect_cli {
namespace {

constexpr int handledSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr long graceNanoseconds = 250'000'000;

struct State {
  std::atomic<int> status{0};    // with which the program ends; 0 while nothing has come
  std::atomic<int> timedOut{0};  // the status of the limit of time; 0 without one
  std::atomic<bool> limitIsTold{false};
  std::atomic<bool> keyboardIsOfOthers{false};
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

// Of a signal and the limit of time the first one counts.
[[nodiscard]] bool ComesFirst(int status) {
  int none = 0;
  return TheState().status.compare_exchange_strong(none, status);
}

[[noreturn]] void EndProgram() {
  State& state = TheState();
  const std::lock_guard lock(state.mutex);
  UndoAll();
  _exit(state.status);
}

void Watch(sigset_t signals) {
  int signal = 0;
  do {
    if (sigwait(&signals, &signal) != 0) return;
  } while (signal == SIGINT && TheState().keyboardIsOfOthers);
  static_cast<void>(ComesFirst(128 + signal));
  const timespec grace{0, graceNanoseconds};
  static_cast<void>(sigtimedwait(&signals, nullptr, &grace));
  EndProgram();
}

void WatchTheTime(long seconds) {
  timespec left{seconds, 0};
  while (nanosleep(&left, &left) != 0) {
  }
  if (!ComesFirst(TheState().timedOut)) return;
  const timespec grace{0, graceNanoseconds};
  nanosleep(&grace, nullptr);
  EndProgram();
}

}  // namespace

void WatchForInterruption() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : handledSignals) {
    if (!IsIgnored(signal)) sigaddset(&signals, signal);
  }
  static_cast<void>(TheState());
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread(Watch, signals).detach();
}

void LimitTime(long seconds, int timedOut, std::string line) {
  // Never destroyed, as the state: it comes first and so is undone last.
  static CleanUp* const told = new CleanUp([line = std::move(line)] {
    if (!TimeIsOver() || TheState().limitIsTold) return;
    static_cast<void>(!write(STDERR_FILENO, line.data(), line.size()));
  });
  static_cast<void>(told);
  TheState().timedOut = timedOut;
  std::thread(WatchTheTime, seconds).detach();
}

bool TimeIsOver() {
  const State& state = TheState();
  return state.timedOut != 0 && state.status == state.timedOut;
}

void TellNothingOfTheLimit() {
  TheState().limitIsTold = true;
}

bool Interrupted() {
  return TheState().status != 0;
}

int InterruptionStatus() {
  return TheState().status;
}

InterruptionHold::InterruptionHold() : lock_(TheState().mutex) {}

KeyboardInterruptPause::KeyboardInterruptPause() {
  TheState().keyboardIsOfOthers = true;
}

KeyboardInterruptPause::~KeyboardInterruptPause() {
  TheState().keyboardIsOfOthers = false;
}

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
