// A server that is killed again and again, at moments that nobody chose. VANTRY_SIM_KILLS says how often (200
// for the long run), and VANTRY_SIM_KILL_SEED which moments.
#include <signal.h>
#include <sqlite3.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>

#include "simulator_process.h"
#include "writing_client.h"

namespace vantry_sim {
namespace {

int FromEnvironment(const char* name, int otherwise) {
  const char* const text = std::getenv(name);
  return text != nullptr ? std::atoi(text) : otherwise;
}

/// What SQLite says of a database, beside a server that may be using it.
std::string IntegrityOf(const std::filesystem::path& file) {
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
  const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
  if (code != SQLITE_OK) return "cannot be opened";
  sqlite3_busy_timeout(opened, 5000);
  std::string said;
  const auto take = [](void* text, int, char** values, char**) {
    *static_cast<std::string*>(text) += std::string(values[0]) + "\n";
    return 0;
  };
  for (const char* question : {"PRAGMA integrity_check", "PRAGMA foreign_key_check"}) {
    if (sqlite3_exec(opened, question, take, &said, nullptr) != SQLITE_OK) said += sqlite3_errmsg(opened);
  }
  return said;
}

class KilledOften : public SimulatorProcess {
 protected:
  KilledOften() : random_(static_cast<unsigned>(FromEnvironment("VANTRY_SIM_KILL_SEED", 1))) {}

  /// A server that is killed within the next fifth of a second, while `work` is done against it. Every tenth
  /// one is killed before it is ready.
  void KillDuring(const std::function<void(Process&, int port)>& work) {
    Process process(Arguments({"--admin-port", "0"}));
    const auto moment = std::chrono::microseconds(std::uniform_int_distribution<int>(0, 200'000)(random_));
    if (std::uniform_int_distribution<int>(0, 9)(random_) == 0) {
      std::this_thread::sleep_for(moment / 8);
      process.Signal(SIGKILL);
    } else {
      const int port = process.ReadyPort();
      ASSERT_GT(port, 0);
      EXPECT_EQ(IntegrityOf(Database()), "ok\n");
      std::thread killer([&] {
        std::this_thread::sleep_for(moment);
        process.Signal(SIGKILL);
      });
      try {
        work(process, port);
      } catch (const std::exception&) {
        // It was killed before anybody had connected.
      }
      killer.join();
    }
    EXPECT_EQ(process.Wait(), 1000 + SIGKILL);
  }

  [[nodiscard]] std::filesystem::path Database() const { return directory_ / "data/vantry-sim.db"; }

  static RawAnswer Control(RawClient& admin, const std::string& method, const std::string& target) {
    admin.Send(method + " " + target + " HTTP/1.1\r\nHost: 127.0.0.1:1\r\nContent-Length: 0\r\n\r\n");
    return admin.Read();
  }

  const int kills_ = FromEnvironment("VANTRY_SIM_KILLS", 20);
  std::mt19937 random_;
};

/// What a server has answered.
struct Answered {
  std::map<int, std::string> made;
  std::map<int, std::string> checkedIn;
  int snapshots = 0;
  int number = 0;  ///< of the next document
};

void WriteUntilKilled(int port, Answered& answered) {
  WritingClient writer(port);
  for (;;) {
    const int number = answered.number++;
    const std::string id = writer.Make(number);
    if (id.empty()) return;
    answered.made[number] = id;
    const std::string next = writer.CheckOutAndIn(id);
    if (next.empty()) return;
    answered.checkedIn[number] = next;
  }
}

TEST_F(KilledOften, KeepsEveryAnsweredUploadCheckinAndSnapshotWhole) {
  Answered answered;
  for (int kill = 0; kill < kills_ && !HasFailure(); ++kill) {
    KillDuring([&](Process& process, int port) {
      std::thread snapshots([&] {
        try {
          RawClient admin(process.adminPort());
          while (Control(admin, "PUT", "/snapshots/s" + std::to_string(answered.snapshots)).status == 200) {
            ++answered.snapshots;
            // Somebody else gets his turn.
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
          }
        } catch (const std::exception&) {
        }
      });
      try {
        WriteUntilKilled(port, answered);
      } catch (const std::exception&) {
      }
      snapshots.join();
    });
  }
  std::printf("%d kills; answered: %zu documents, %zu check-ins, %d snapshots\n", kills_,
              answered.made.size(), answered.checkedIn.size(), answered.snapshots);
  // How many depends on the machine.
  EXPECT_GT(answered.checkedIn.size(), 0U);
  EXPECT_GT(answered.snapshots, 0);

  Process process(Arguments({"--admin-port", "0"}));
  RawClient client(process.ReadyPort());
  EXPECT_EQ(IntegrityOf(Database()), "ok\n");
  for (const auto& [number, id] : answered.made) ExpectWhole(client, id, number);
  for (const auto& [number, id] : answered.checkedIn) ExpectWhole(client, id, number);
  for (const auto& entry : std::filesystem::directory_iterator(directory_ / "data/content"))
    EXPECT_NE(entry.path().filename().string().rfind("incoming-", 0), 0U) << entry.path();
  for (int i = 0; i < answered.snapshots; ++i) {
    const auto file = directory_ / "data/snapshots" / ("s" + std::to_string(i) + ".db");
    if (i % 10 == 0) {
      EXPECT_EQ(IntegrityOf(file), "ok\n") << file;
    }
    ASSERT_TRUE(std::filesystem::exists(file)) << file;
  }
  RawClient admin(process.adminPort());
  const std::string last = std::to_string(answered.snapshots - 1);
  EXPECT_EQ(Control(admin, "POST", "/snapshots/s" + last).status, 200);
  EXPECT_EQ(client.Get("/servlet/rest/v1/dkm/documents/D1001").status, 200);
}

TEST_F(KilledOften, WhileStatesAreRestoredHoldsOneOfThemWhole) {
  std::string before;
  {
    Process process(Arguments({"--admin-port", "0"}));
    RawClient client(process.ReadyPort());
    RawClient admin(process.adminPort());
    before = client.Get("/servlet/rest/v1/dkm/documents/D1002").body;
    EXPECT_EQ(Control(admin, "DELETE", "/documents/D1001").status, 204);
    EXPECT_EQ(Control(admin, "PUT", "/snapshots/less").status, 200);
  }
  for (int kill = 0; kill < kills_ / 4 && !HasFailure(); ++kill) {
    KillDuring([&](Process& process, int port) {
      RawClient client(port);
      const int fork = client.Get("/servlet/rest/v1/dkm/documents/D1001").status;
      const std::string tree = client.Get("/servlet/rest/v1/dkm/documents/D1002").body;
      // 0 is a server that was killed before it answered.
      EXPECT_TRUE(fork == 0 || fork == 200 || fork == 404) << fork;
      EXPECT_TRUE(tree.empty() || Member(tree, "id") == Member(before, "id")) << tree;
      RawClient admin(process.adminPort());
      while (Control(admin, "POST", "/reset").status == 200 &&
             Control(admin, "POST", "/snapshots/less").status == 200) {
      }
    });
  }
  Process process(Arguments({"--admin-port", "0"}));
  RawClient client(process.ReadyPort());
  EXPECT_EQ(IntegrityOf(Database()), "ok\n");
  RawClient admin(process.adminPort());
  EXPECT_EQ(Control(admin, "POST", "/snapshots/less").status, 200);
  EXPECT_EQ(client.Get("/servlet/rest/v1/dkm/documents/D1001").status, 404);
  EXPECT_EQ(Control(admin, "POST", "/reset").status, 200);
  EXPECT_EQ(client.Get("/servlet/rest/v1/dkm/documents/D1001").status, 200);
}

}  // namespace
}  // namespace vantry_sim
