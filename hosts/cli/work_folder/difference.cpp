#include "hosts/cli/work_folder/difference.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "hosts/cli/program/environment.h"

namespace vtdirect_cli {
namespace {

// "diff" exits with 2 and more for trouble of its own.
constexpr int troubleOfDiff = 2;
// A shell that does not find the command.
constexpr int notFoundByShell = 127;

[[nodiscard]] std::vector<std::string> WordsFor(const std::string& tool, const ComparedFile& before,
                                                const ComparedFile& after) {
  if (tool.empty()) {
    return {"diff", "-u", "--label", before.label, "--label", after.label, "--", before.path, after.path};
  }
  // The shell takes the tool apart, with the options beside it, and the files as they are.
  return {"sh", "-c", tool + " \"$@\"", "sh", before.path, after.path};
}

// The watch blocks signals in this process, and what it starts would inherit that.
void TakeSignalsAsUsual(posix_spawnattr_t& attributes) {
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  sigset_t usual;
  sigemptyset(&usual);
  sigaddset(&usual, SIGPIPE);
  sigaddset(&usual, SIGXFSZ);
  posix_spawnattr_setsigdefault(&attributes, &usual);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

[[nodiscard]] int Start(std::vector<std::string>& words, pid_t& id) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  TakeSignalsAsUsual(attributes);
  const int error = posix_spawnp(&id, arguments[0], nullptr, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  return error;
}

}  // namespace

std::optional<Failure> ShowDifference(const ComparedFile& before, const ComparedFile& after) {
  const std::string tool = Environment("VTDIRECT_DIFF");
  std::vector<std::string> words = WordsFor(tool, before, after);
  pid_t id = -1;
  if (const int error = Start(words, id); error != 0) {
    return Failure{ExitCode::Failure, "cannot run " + words.front() + ": " + std::strerror(error)};
  }
  int status = 0;
  while (waitpid(id, &status, 0) < 0 && errno == EINTR) {
  }
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
  if (!tool.empty() && code != notFoundByShell) return std::nullopt;
  if (code < troubleOfDiff) return std::nullopt;
  return Failure{ExitCode::Failure, (tool.empty() ? "diff" : tool) + " could not compare the files"};
}

}  // namespace vtdirect_cli
