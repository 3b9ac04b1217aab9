// vantry-sim as the process that scripts start, stop and kill.
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>

#include "raw_client.h"
#include "simulator_process.h"

namespace vantry_sim {
namespace {

constexpr const char* forkPath = "/servlet/rest/v1/dkm/documents/D1001";

TEST_F(SimulatorProcess, PrintsOneReadyLineAndEndsCleanlyOnEitherSignal) {
  for (const int signal : {SIGTERM, SIGINT}) {
    Process process(Arguments({"--prefix", "/vt"}));
    const int port = process.ReadyPort();
    ASSERT_GT(port, 0);
    RawClient client(port);
    EXPECT_EQ(client.Get(std::string("/vt") + forkPath).status, 200);
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

// Else the ready line goes into the first file that is opened.
TEST_F(SimulatorProcess, WithoutStandardOutputWritesItsReadyLineNowhere) {
  const std::filesystem::path log = directory_ / "log";
  Process process(Arguments({"--log", log}), true);
  for (int tries = 0; tries < 1000 && !std::filesystem::exists(log); ++tries) usleep(10'000);
  process.Signal(SIGTERM);
  EXPECT_EQ(process.Wait(), 0);
  EXPECT_EQ(std::filesystem::file_size(log), 0U);
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
  EXPECT_EQ(client.Get(forkPath).status, 200);
}

TEST_F(SimulatorProcess, TakenPortEndsWithOne) {
  Process first(Arguments());
  const int port = first.ReadyPort();
  Process second({"--port", std::to_string(port), "--data", (directory_ / "other").string(), "--large", "1"});
  EXPECT_EQ(second.Line(), "");
  EXPECT_EQ(second.Wait(), 1);
}

TEST_F(SimulatorProcess, AdminPortIsToldOnTheReadyLineAndControlsTheServer) {
  Process process(Arguments({"--admin-port", "0", "--user", "anna:pw", "--latency", "1"}));
  const int port = process.ReadyPort();
  ASSERT_GT(process.adminPort(), 0);
  RawClient client(port);
  RawClient admin(process.adminPort());
  const auto control = [&](const std::string& method, const std::string& target,
                           const std::string& body = {}) {
    admin.Send(method + " " + target + " HTTP/1.1\r\nHost: 127.0.0.1:1\r\nContent-Length: " +
               std::to_string(body.size()) + "\r\n\r\n" + body);
    return admin.Read();
  };
  const std::string anna = "Authorization: Basic YW5uYTpwdw==\r\n";
  EXPECT_EQ(client.Get(forkPath, anna).status, 200);
  EXPECT_EQ(control("DELETE", "/documents/D1001").status, 204);
  EXPECT_EQ(client.Get(forkPath, anna).status, 404);
  EXPECT_EQ(control("POST", "/faults", "{\"rule\":\"GET *D1001=418*1\"}").status, 201);
  EXPECT_EQ(client.Get(forkPath, anna).status, 418);
  EXPECT_EQ(control("POST", "/reset").status, 200);
  EXPECT_EQ(client.Get(forkPath, anna).status, 200);
  const auto requests = control("GET", "/requests?path=*D1001&count=1&wait=10000");
  EXPECT_EQ(requests.status, 200);
  EXPECT_EQ(requests.body.find("YW5uYTpwdw"), std::string::npos);
  // Whoever waits is let go when the server ends.
  admin.Send("GET /requests?path=/never&wait=60000 HTTP/1.1\r\nHost: 127.0.0.1:1\r\n\r\n");
  EXPECT_EQ(client.Get(forkPath, anna).status, 200);
  process.Signal(SIGTERM);
  EXPECT_EQ(process.Wait(), 0);
}

TEST_F(SimulatorProcess, AdminPortIsOnTheLoopbackAloneAndOffWithoutItsOption) {
  Process process(Arguments({"--bind", "0.0.0.0", "--admin-port", "0"}));
  const std::string line = process.Line();
  EXPECT_NE(line.find(" admin on http://127.0.0.1:"), std::string::npos) << line;
  std::string listening;
  std::ifstream sockets("/proc/net/tcp");
  const int port = std::atoi(line.substr(line.rfind(':') + 1).c_str());
  char place[32];
  std::snprintf(place, sizeof place, "00000000:%04X", static_cast<unsigned>(port));
  for (std::string entry; std::getline(sockets, entry);) listening += entry + "\n";
  EXPECT_EQ(listening.find(place), std::string::npos);
  std::snprintf(place, sizeof place, "0100007F:%04X", static_cast<unsigned>(port));
  EXPECT_NE(listening.find(place), std::string::npos);
  Process plain({"--port", "0", "--data", (directory_ / "other").string(), "--large", "1"});
  EXPECT_GT(plain.ReadyPort(), 0);
  EXPECT_EQ(plain.adminPort(), 0);
}

/// Runs the program to its end. @return its exit code, and what it said on either way
std::pair<int, std::string> RunToItsEnd(const std::string& arguments,
                                        const std::filesystem::path& directory) {
  const std::string output = (directory / "output").string();
  const int status =
      std::system((std::string(VANTRY_SIM_PROGRAM) + " " + arguments + " >" + output + " 2>&1").c_str());
  std::ifstream file(output);
  return {WEXITSTATUS(status), {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()}};
}

TEST_F(SimulatorProcess, SecondServerOnTheSameDataSaysSoAndEnds) {
  Process first(Arguments());
  const int port = first.ReadyPort();
  ASSERT_GT(port, 0);
  const std::string data = (directory_ / "data").string();
  EXPECT_EQ(RunToItsEnd("--port 0 --data " + data, directory_),
            std::pair(1, "vantry-sim: another vantry-sim uses " + data + "\n"));
  EXPECT_EQ(RawClient(port).Get(forkPath).status, 200);
}

TEST_F(SimulatorProcess, StateFileIsLookedAtWithoutAServer) {
  const std::string state = (directory_ / "state.yaml").string();
  std::ofstream(state) << "contexts: [{name: Bike}]\ndocuments: [{cadName: a.lxz, folder: Bike/Default}]\n";
  auto [code, said] = RunToItsEnd("--check " + state, directory_);
  EXPECT_EQ(code, 0);
  EXPECT_EQ(said, state + ": 1 user, 1 context, 1 document in 1 version, 0 workspaces\n");
  std::ofstream(state) << "contexts: [{name: Bike}]\nbikes: []\n";
  std::tie(code, said) = RunToItsEnd("--check " + state, directory_);
  EXPECT_EQ(code, 1);
  EXPECT_EQ(said, state + ":2: a state has no key \"bikes\"\n");
  std::tie(code, said) = RunToItsEnd("--check " + state + " --port 0", directory_);
  EXPECT_EQ(code, 2);
}

TEST_F(SimulatorProcess, ExportWritesAStateThatAnotherServerBeginsWith) {
  const std::string data = (directory_ / "data").string();
  const std::string state = (directory_ / "state.yaml").string();
  {
    Process process(Arguments());
    ASSERT_GT(process.ReadyPort(), 0);
    const auto [code, said] = RunToItsEnd("export --data " + data + " --out " + state, directory_);
    EXPECT_EQ(code, 1);
    EXPECT_EQ(said, "vantry-sim: another vantry-sim uses " + data + "\n");
  }
  EXPECT_EQ(RunToItsEnd("export --data " + data + " --out " + state, directory_),
            std::pair(0, std::string()));
  Process process({"--port", "0", "--data", (directory_ / "other").string(), "--seed", "file:" + state});
  RawClient client(process.ReadyPort());
  EXPECT_NE(client.Get(forkPath).body.find("\"fork.lxz\""), std::string::npos);
}

TEST_F(SimulatorProcess, SeedOfAFilledDirectoryIsIgnoredWithAWord) {
  {
    Process process(Arguments());
    ASSERT_GT(process.ReadyPort(), 0);
    process.Signal(SIGTERM);
    EXPECT_EQ(process.Wait(), 0);
  }
  const std::string data = (directory_ / "data").string();
  const auto [code, said] =
      RunToItsEnd("--port 0 --bind 203.0.113.1 --seed empty --data " + data, directory_);
  // An address of nobody's ends it after the opening of the directory.
  EXPECT_EQ(code, 1);
  EXPECT_EQ(said, "vantry-sim: --seed is ignored, since " + data +
                      " was filled before and keeps what it holds\n"
                      "vantry-sim: cannot listen on 203.0.113.1 port 0\n");
}

TEST_F(SimulatorProcess, WordsThatItDoesNotKnowAreSaidInTheirOrder) {
  const auto [code, said] = RunToItsEnd("--data " + (directory_ / "data").string() + " --prot 3", directory_);
  EXPECT_EQ(code, 2);
  EXPECT_EQ(said, "vantry-sim: not expected: --prot 3; see --help\n");
}

TEST_F(SimulatorProcess, APortThatIsTakenIsToldWithTheWayOut) {
  Process process(Arguments());
  const std::string port = std::to_string(process.ReadyPort());
  const auto [code, said] =
      RunToItsEnd("--port " + port + " --data " + (directory_ / "other").string(), directory_);
  EXPECT_EQ(code, 1);
  EXPECT_EQ(said, "vantry-sim: cannot listen on 127.0.0.1 port " + port +
                      "; if another program has it, 0 chooses a free one\n");
}

TEST_F(SimulatorProcess, BadUsageEndsWithTwo) {
  Process process({"--seed", "demo"});
  EXPECT_EQ(process.Wait(), 2);
}

}  // namespace
}  // namespace vantry_sim
