#include "hosts/mount/writing/command_runner.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>

#include "hosts/mount/cache/open_file.h"

extern char** environ;

namespace vtdirect_mount {
namespace {

constexpr std::size_t longestFault = 4000;

// Signals are as usual in the child, and its output comes to this process.
class Surroundings {
 public:
  Surroundings(const std::string& directory, int output) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addchdir_np(&actions_, directory.c_str());
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions_, output, STDERR_FILENO);
    sigset_t none;
    sigset_t usual;
    sigemptyset(&none);
    sigemptyset(&usual);
    sigaddset(&usual, SIGPIPE);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &usual);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~Surroundings() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;

  [[nodiscard]] pid_t Start(std::vector<std::string> words) const {
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    pid_t process = -1;
    const int error =
        posix_spawnp(&process, pointers.front(), &actions_, &attributes_, pointers.data(), environ);
    return error == 0 ? process : -1;
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

[[nodiscard]] std::string ReadToEnd(int descriptor) {
  std::string text;
  char buffer[1024];
  ssize_t count = 0;
  while ((count = read(descriptor, buffer, sizeof buffer)) > 0 || (count < 0 && errno == EINTR)) {
    if (count > 0 && text.size() < longestFault) text.append(buffer, static_cast<std::size_t>(count));
  }
  return text;
}

[[nodiscard]] int WaitForEnd(pid_t process) {
  int status = -1;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

void PinServer(const std::string& address, std::vector<std::string>& command) {
  const std::string nickname = VtDirectManager::GetServerNickname(address.c_str());
  const std::string url = VtDirectManager::GetServerURL(address.c_str());
  if (!nickname.empty() && !url.empty()) command.insert(command.end(), {"--server", nickname + "=" + url});
}

std::string CommandRunner::Run(const std::vector<std::string>& command) const {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) return "there is no pipe to be had";
  const OpenFile reading(ends[0]);
  std::vector<std::string> words = words_;
  words.insert(words.end(), command.begin(), command.end());
  pid_t process = -1;
  {
    const OpenFile writing(ends[1]);
    process = Surroundings(directory_, ends[1]).Start(std::move(words));
  }
  if (process < 0) return "cannot start " + words_.front();
  std::string said = ReadToEnd(reading.descriptor());
  if (WaitForEnd(process) == 0) return "";
  while (said.ends_with('\n')) said.pop_back();
  return said.empty() ? words_.front() + " failed" : said;
}

}  // namespace vtdirect_mount
