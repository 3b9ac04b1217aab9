#include "hosts/cli/editing/foreground_program.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {
namespace {

// The program ignores some signals and blocks others, and what it starts would inherit both.
void TakeSignalsAsUsual(posix_spawnattr_t& attributes) {
  sigset_t none;
  sigemptyset(&none);
  sigset_t usual;
  sigemptyset(&usual);
  for (const int signal : {SIGPIPE, SIGXFSZ}) sigaddset(&usual, signal);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &usual);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

[[nodiscard]] pid_t Start(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  TakeSignalsAsUsual(attributes);
  pid_t id = -1;
  if (posix_spawn(&id, "/bin/sh", nullptr, &attributes, arguments.data(), environ) != 0) id = -1;
  posix_spawnattr_destroy(&attributes);
  return id;
}

}  // namespace

int RunInForeground(const std::string& commandLine, const std::vector<std::string>& words) {
  std::vector<std::string> all = {"sh", "-c", commandLine + " \"$@\"", "sh"};
  all.insert(all.end(), words.begin(), words.end());
  const KeyboardInterruptPause pause;
  const pid_t id = Start(all);
  if (id < 0) return -1;
  int status = 0;
  while (waitpid(id, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace vtdirect_cli
