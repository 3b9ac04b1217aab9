// vantry-sim as the process that scripts start, stop and kill.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "raw_client.h"

namespace {

using vantry_sim::RawClient;

/// A started vantry-sim with its standard output. Killed at the end if it still runs.
class Process {
 public:
  explicit Process(const std::vector<std::string>& arguments) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    std::vector<char*> argv{const_cast<char*>(VANTRY_SIM_PROGRAM)};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    id_ = fork();
    if (id_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      execv(argv[0], argv.data());
      _exit(127);
    }
    close(ends[1]);
    output_ = ends[0];
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    if (id_ > 0) {
      Signal(SIGKILL);
      Wait();
    }
    close(output_);
  }

  /// The next line of standard output; what there is after ten seconds of silence or at the end.
  std::string Line() {
    std::string line;
    char c = 0;
    for (;;) {
      pollfd entry{output_, POLLIN, 0};
      if (poll(&entry, 1, 10'000) <= 0 || read(output_, &c, 1) != 1) return line;
      if (c == '\n') return line;
      line += c;
    }
  }

  /// The port of the ready line; 0 when it isn't one.
  int ReadyPort() {
    const std::string line = Line();
    std::smatch match;
    if (!std::regex_match(line, match,
                          std::regex("vantry-sim listening on http://127\\.0\\.0\\.1:([0-9]+)(/vt)?/"))) {
      ADD_FAILURE() << "not a ready line: " << line;
      return 0;
    }
    return std::atoi(match[1].str().c_str());
  }

  void Signal(int signal) const { kill(id_, signal); }

  /// The exit code, or 1000 and the signal that ended it.
  int Wait() {
    int status = 0;
    waitpid(id_, &status, 0);
    id_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }

 private:
  pid_t id_ = -1;
  int output_ = -1;
};

class SimulatorProcess : public ::testing::Test {
 protected:
  SimulatorProcess() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vantry-sim-process-XXXXXX").string();
    directory_ = mkdtemp(pattern.data());
  }
  ~SimulatorProcess() override { std::filesystem::remove_all(directory_); }

  std::vector<std::string> Arguments(std::vector<std::string> more = {}) const {
    std::vector<std::string> all{"--port", "0", "--data", (directory_ / "data").string(), "--large", "4096"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  std::filesystem::path directory_;
};

constexpr const char* kFork = "/servlet/rest/v1/dkm/documents/D1001";

TEST_F(SimulatorProcess, PrintsOneReadyLineAndEndsCleanlyOnEitherSignal) {
  for (const int signal : {SIGTERM, SIGINT}) {
    Process process(Arguments({"--prefix", "/vt"}));
    const int port = process.ReadyPort();
    ASSERT_GT(port, 0);
    RawClient client(port);
    EXPECT_EQ(client.Get(std::string("/vt") + kFork).status, 200);
    process.Signal(signal);
    EXPECT_EQ(process.Line(), "");
    EXPECT_EQ(process.Wait(), 0);
  }
}

TEST_F(SimulatorProcess, SignalRightAfterTheReadyLineIsHeeded) {
  for (int i = 0; i < 10; ++i) {
    Process process(Arguments());
    ASSERT_GT(process.ReadyPort(), 0);
    process.Signal(SIGTERM);
    EXPECT_EQ(process.Wait(), 0);
  }
}

TEST_F(SimulatorProcess, KilledServerKeepsWhatItHolds) {
  std::string before;
  {
    Process process(Arguments());
    RawClient client(process.ReadyPort());
    before = client.Get("/servlet/rest/v1/contexts").body;
    process.Signal(SIGKILL);
    EXPECT_EQ(process.Wait(), 1000 + SIGKILL);
  }
  Process process(Arguments({"--seed", "empty"}));
  RawClient client(process.ReadyPort());
  EXPECT_EQ(client.Get("/servlet/rest/v1/contexts").body, before);
  EXPECT_NE(before.find("Trekking Bike"), std::string::npos);
}

TEST_F(SimulatorProcess, KilledWhileSeedingIsSeededAtTheNextStart) {
  {
    Process process(Arguments({"--seed", "bulk:2000000"}));
    // The lock is taken before the seeding begins.
    for (int i = 0; i < 1000 && !std::filesystem::exists(directory_ / "data/content/1"); ++i) usleep(10'000);
    process.Signal(SIGKILL);
    EXPECT_EQ(process.Wait(), 1000 + SIGKILL);
  }
  Process process(Arguments());
  RawClient client(process.ReadyPort());
  EXPECT_EQ(client.Get(kFork).status, 200);
}

TEST_F(SimulatorProcess, SecondServerOnTheSameDataIsRefused) {
  Process first(Arguments());
  ASSERT_GT(first.ReadyPort(), 0);
  Process second(Arguments());
  EXPECT_EQ(second.Line(), "");
  EXPECT_EQ(second.Wait(), 1);
}

TEST_F(SimulatorProcess, TakenPortEndsWithOne) {
  Process first(Arguments());
  const int port = first.ReadyPort();
  Process second({"--port", std::to_string(port), "--data", (directory_ / "other").string(), "--large", "1"});
  EXPECT_EQ(second.Line(), "");
  EXPECT_EQ(second.Wait(), 1);
}

TEST_F(SimulatorProcess, BadUsageEndsWithTwo) {
  Process process({"--seed", "demo"});
  EXPECT_EQ(process.Wait(), 2);
}

}  // namespace
