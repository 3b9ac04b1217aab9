#include "simulator_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <regex>

namespace vantry_sim {

Process::Process(const std::vector<std::string>& arguments, bool closedOutput) {
  int ends[2];
  EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
  std::vector<char*> argv{const_cast<char*>(VANTRY_SIM_PROGRAM)};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  id_ = fork();
  if (id_ == 0) {
    dup2(ends[1], STDOUT_FILENO);
    if (closedOutput) close(STDOUT_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(ends[1]);
  output_ = ends[0];
}

Process::~Process() {
  if (id_ > 0) {
    Signal(SIGKILL);
    Wait();
  }
  close(output_);
}

std::string Process::Line() {
  std::string line;
  char c = 0;
  for (;;) {
    pollfd entry{output_, POLLIN, 0};
    if (poll(&entry, 1, 10'000) <= 0 || read(output_, &c, 1) != 1) return line;
    if (c == '\n') return line;
    line += c;
  }
}

int Process::ReadyPort() {
  const std::string line = Line();
  std::smatch match;
  if (!std::regex_match(line, match,
                        std::regex("vantry-sim listening on http://127\\.0\\.0\\.1:([0-9]+)(/vt)?/"
                                   "( admin on http://127\\.0\\.0\\.1:([0-9]+)/)?"))) {
    ADD_FAILURE() << "not a ready line: " << line;
    return 0;
  }
  adminPort_ = std::atoi(match[4].str().c_str());
  return std::atoi(match[1].str().c_str());
}

void Process::Signal(int signal) const {
  kill(id_, signal);
}

long Process::PeakKilobytes() const {
  std::ifstream status("/proc/" + std::to_string(id_) + "/status");
  for (std::string text; std::getline(status, text);) {
    if (text.rfind("VmHWM:", 0) == 0) return std::atol(text.c_str() + 6);
  }
  return 0;
}

int Process::Wait() {
  int status = 0;
  waitpid(id_, &status, 0);
  id_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

SimulatorProcess::SimulatorProcess() {
  std::string pattern = (std::filesystem::temp_directory_path() / "vantry-sim-process-XXXXXX").string();
  directory_ = mkdtemp(pattern.data());
}

SimulatorProcess::~SimulatorProcess() {
  std::filesystem::remove_all(directory_);
}

std::vector<std::string> SimulatorProcess::Arguments(std::vector<std::string> more) const {
  std::vector<std::string> all{"--port", "0", "--data", (directory_ / "data").string(), "--large", "4096"};
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

}  // namespace vantry_sim
