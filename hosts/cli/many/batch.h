#pragma once

#include <functional>
#include <string>
#include <vector>

#include "hosts/cli/failures/result.h"
#include "hosts/cli/many/subjects.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// How a command works on several objects.
struct BatchOptions {
  unsigned threads = 1;
  unsigned retries = 0;  ///< how often a task is repeated whose question broke off
  bool stopOnError = false;
  bool verbose = false;
  /// Whether what a task says comes in the order of the tasks, and not as they end.
  bool inOrder = true;
  /// Called on any thread before something is written, to make room on a terminal. May be empty.
  std::function<void()> makeRoom = {};
};

/// One part of a command.
struct BatchTask {
  std::string address;  ///< of what it works on, by which its server is known
  /// Does it, on any thread, and tells what it finds and why it failed to this host.
  std::function<ExitCode(Host& host)> run;
  /// Tells of it when its server can't be used, without a request; when empty it is only counted.
  std::function<ExitCode(Host& host, const Failure& why)> passOver = {};
};

/// How it went.
struct BatchEnd {
  ExitCode worst = ExitCode::Ok;
  std::vector<Failure> failures;
  std::size_t ended = 0;     ///< tasks that were run
  std::size_t notAsked = 0;  ///< tasks that were left out, since their server can't be used
};

/// Runs tasks that change nothing on a server, several at a time, those of one server together. Of each server the
/// first one runs alone, so that a login is asked for once. When a server turns out not to be usable, what is
/// left of its tasks is not begun. After a signal, or a failure with `stopOnError`, no further task begins.
/// Makes the requests of the tasks.
[[nodiscard]] BatchEnd RunTogether(Host& host, const std::vector<BatchTask>& tasks,
                                   const BatchOptions& options);

/// Runs tasks that change something, one after the other on this thread, so that one change at most is under way
/// when the program ends in the middle of it.
[[nodiscard]] BatchEnd RunOneByOne(Host& host, const std::vector<BatchTask>& tasks, bool stopOnError);

/// Tells the failures of a command on several objects once more, together, where they are seen; those of a
/// command on one object have been told.
/// @param all  how many objects the command was to work on
/// @return the exit status of the command, which is that of the worst
[[nodiscard]] ExitCode FinishBatch(Host& host, const BatchEnd& end, std::size_t all);

/// Adds the failures of a search to those of what it has found, and tells them.
void TellFailures(Host& host, const std::vector<Failure>& failures, BatchEnd& end);

}  // namespace vtdirect_cli
