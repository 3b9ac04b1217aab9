#include "hosts/cli/servers/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>

#include "hosts/cli/program/interruption.h"

extern char** environ;

namespace vtdirect_cli {
namespace {

using Clock = std::chrono::steady_clock;

// Far more than any name and password.
constexpr std::size_t mostOutput = std::size_t{1} << 16U;
constexpr int millisecondsBetween = 20;

// Two ends of a pipe, closed when they go.
struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;

  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    readEnd = ends[0];
    writeEnd = ends[1];
  }
  ~Pipe() {
    Close(readEnd);
    Close(writeEnd);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  static void Close(int& descriptor) {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
  }
};

// The program ignores some signals and blocks others, and what it starts would inherit both.
void TakeSignalsAsUsual(posix_spawnattr_t& attributes) {
  sigset_t none;
  sigemptyset(&none);
  sigset_t usual;
  sigemptyset(&usual);
  for (const int signal : {SIGPIPE, SIGXFSZ}) sigaddset(&usual, signal);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &usual);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
}

[[nodiscard]] pid_t StartShell(const std::string& commandLine, const Pipe& input, const Pipe& output) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input.readEnd, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output.writeEnd, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  TakeSignalsAsUsual(attributes);
  std::string words[] = {"sh", "-c", commandLine};
  char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
  pid_t id = -1;
  if (posix_spawn(&id, "/bin/sh", &actions, &attributes, arguments, environ) != 0) id = -1;
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return id;
}

// Writes what fits now; the input's end is closed when all is written or nobody reads it.
void Feed(Pipe& input, std::string_view& rest) {
  const ssize_t count = write(input.writeEnd, rest.data(), rest.size());
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  rest.remove_prefix(count < 0 ? rest.size() : static_cast<std::size_t>(count));
  if (rest.empty()) Pipe::Close(input.writeEnd);
}

// Takes what is there; false at the end of the output.
[[nodiscard]] bool Take(int descriptor, std::string& output) {
  std::array<char, 4096> buffer{};
  const ssize_t count = read(descriptor, buffer.data(), buffer.size());
  if (count < 0) return errno == EAGAIN || errno == EINTR;
  output.append(buffer.data(), static_cast<std::size_t>(count));
  return count > 0;
}

[[nodiscard]] ChildEnd Talk(Pipe& input, Pipe& output, std::string_view toSend, Clock::time_point deadline,
                            std::string& answer) {
  for (;;) {
    if (Interrupted()) return ChildEnd::Interrupted;
    if (Clock::now() >= deadline) return ChildEnd::TooLate;
    std::array<pollfd, 2> waits{{{output.readEnd, POLLIN, 0}, {input.writeEnd, POLLOUT, 0}}};
    if (poll(waits.data(), waits.size(), millisecondsBetween) <= 0) continue;
    if (input.writeEnd >= 0 && waits[1].revents != 0) Feed(input, toSend);
    if (waits[0].revents != 0 && !Take(output.readEnd, answer)) return ChildEnd::Ended;
    if (answer.size() > mostOutput) return ChildEnd::TooMuch;
  }
}

// A program may close its output and go on.
[[nodiscard]] ChildEnd WaitFor(pid_t id, Clock::time_point deadline, int& status) {
  while (waitpid(id, &status, WNOHANG) == 0) {
    if (Interrupted()) return ChildEnd::Interrupted;
    if (Clock::now() >= deadline) return ChildEnd::TooLate;
    poll(nullptr, 0, 1);
  }
  return ChildEnd::Ended;
}

}  // namespace

ChildResult RunShell(const std::string& commandLine, const std::string& input, long seconds) {
  ChildResult result;
  Pipe toChild;
  Pipe fromChild;
  if (toChild.readEnd < 0 || fromChild.readEnd < 0) return result;
  fcntl(toChild.writeEnd, F_SETFL, O_NONBLOCK);
  fcntl(fromChild.readEnd, F_SETFL, O_NONBLOCK);
  const pid_t id = StartShell(commandLine, toChild, fromChild);
  if (id < 0) return result;
  CleanUp kill([id] { ::kill(-id, SIGKILL); });
  Pipe::Close(toChild.readEnd);
  Pipe::Close(fromChild.writeEnd);
  const auto deadline = Clock::now() + std::chrono::seconds(seconds);
  result.end = Talk(toChild, fromChild, input, deadline, result.output);
  if (result.end == ChildEnd::Ended) result.end = WaitFor(id, deadline, result.status);
  // After this the number may be another process's.
  kill.Dismiss();
  if (result.end == ChildEnd::Ended) return result;
  ::kill(-id, SIGKILL);
  waitpid(id, nullptr, 0);
  return result;
}

}  // namespace vtdirect_cli
