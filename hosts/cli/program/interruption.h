#pragma once

#include <functional>
#include <list>
#include <mutex>
#include <string>

/// SIGINT, SIGTERM and SIGHUP. A thread of its own waits for them, since the library may sit in a call that
/// moves no byte and so asks no progress function for a long while. When one comes, `Interrupted()` turns
/// true, the program gets a quarter of a second to end by itself, and then the thread undoes what is
/// registered and ends the process with 128 plus the number of the signal. A second signal cuts the wait
/// short.
namespace vtdirect_cli {

/// Starts the watch. To be called once, before any other thread is there. A signal that the caller of the
/// program has set to be ignored stays ignored.
void WatchForInterruption();

/// Ends the program in the same way when so much time has passed, with the exit status `timedOut` and the
/// line on standard error, unless something that is undone has told more. To be called once at most.
/// @param line  with its line feed
void LimitTime(long seconds, int timedOut, std::string line);

/// Whether it is the limit of time that has ended the program. Any thread.
[[nodiscard]] bool TimeIsOver();

/// Keeps the limit of time from writing its line: what has come to an end has been told already. Any thread.
void TellNothingOfTheLimit();

/// Whether a signal has come, or the time is over. Any thread.
[[nodiscard]] bool Interrupted();

/// The exit status that belongs to the signal that came, or to the time that is over; 0 without either. Any
/// thread.
[[nodiscard]] int InterruptionStatus();

/// While one lives, the process isn't ended by the watch: for a step that must be done whole or not at all.
/// May be nested. Keep it short.
class InterruptionHold {
 public:
  InterruptionHold();

 private:
  std::unique_lock<std::recursive_mutex> lock_;
};

/// While one lives, SIGINT does not end the process: Ctrl-C is meant for the program that was started at the
/// terminal. The other signals do. One at a time.
class KeyboardInterruptPause {
 public:
  KeyboardInterruptPause();
  ~KeyboardInterruptPause();
  KeyboardInterruptPause(const KeyboardInterruptPause&) = delete;
  KeyboardInterruptPause& operator=(const KeyboardInterruptPause&) = delete;
};

/// Something to be undone however the process ends: a temporary file, a terminal's mode. Runs once, on
/// destruction or by the watch.
class CleanUp {
 public:
  /// @param undo  may run on another thread, while the one that registered it is anywhere
  explicit CleanUp(std::function<void()> undo);
  ~CleanUp();
  CleanUp(const CleanUp&) = delete;
  CleanUp& operator=(const CleanUp&) = delete;

  /// Nothing is left to undo.
  void Dismiss();

 private:
  std::function<void()> undo_;
  std::list<std::function<void()>*>::iterator place_;
};

}  // namespace vtdirect_cli
