#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "tests/e2e/cli/process.h"

namespace vtdirect_test {

/// The program on a terminal of its own, with the test in the place of the user.
class TerminalSession {
 public:
  TerminalSession(std::vector<std::string> words, const std::map<std::string, std::string>& environment,
                  const std::string& directory) {
    words.insert(words.begin(), VTDIRECT_PROGRAM);
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    id_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (id_ != 0) return;
    clearenv();
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    signal(SIGINT, SIG_DFL);
    if (chdir(directory.c_str()) == 0) execv(argv[0], argv.data());
    _exit(127);
  }
  ~TerminalSession() {
    if (id_ > 0) {
      kill(id_, SIGKILL);
      waitpid(id_, nullptr, 0);
    }
    close(terminal_);
  }
  TerminalSession(const TerminalSession&) = delete;
  TerminalSession& operator=(const TerminalSession&) = delete;

  /// Waits for a text on the screen.
  [[nodiscard]] bool Sees(const std::string& text) {
    return WaitUntil([this, &text] {
      Read();
      return screen_.find(text) != std::string::npos;
    });
  }
  void Types(const std::string& text) {
    screen_.clear();
    EXPECT_EQ(write(terminal_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  [[nodiscard]] bool Echoes() const {
    termios mode = {};
    EXPECT_EQ(tcgetattr(terminal_, &mode), 0);
    return (mode.c_lflag & ECHO) != 0;
  }
  [[nodiscard]] int Wait() {
    int status = -1;
    EXPECT_TRUE(WaitUntil([this, &status] {
      Read();
      return waitpid(id_, &status, WNOHANG) == id_;
    }));
    id_ = -1;
    Read();
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  [[nodiscard]] const std::string& screen() const { return screen_; }

 private:
  void Read() {
    pollfd waiting{terminal_, POLLIN, 0};
    char buffer[4096];
    while (poll(&waiting, 1, 0) > 0 && (waiting.revents & POLLIN) != 0) {
      const ssize_t count = read(terminal_, buffer, sizeof buffer);
      if (count <= 0) return;
      screen_.append(buffer, static_cast<std::size_t>(count));
    }
  }

  pid_t id_ = -1;
  int terminal_ = -1;
  std::string screen_;
};

}  // namespace vtdirect_test
