// vantry-sim as the process that scripts start, stop and kill.
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "raw_client.h"
#include "simulator_process.h"

namespace vantry_sim {
namespace {

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
}  // namespace vantry_sim
