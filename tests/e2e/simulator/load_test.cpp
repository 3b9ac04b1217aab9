// Thousands of connections, slow ones, and bodies without an end: the server stays within its memory and
// answers others, who come from another address. VANTRY_SIM_CONNECTIONS says how many stay open (10000), and
// the figures go to the standard output.
#include <sys/resource.h>

#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "simulator_process.h"
#include "writing_client.h"

namespace vantry_sim {
namespace {

constexpr const char* forkPath = "/servlet/rest/v1/dkm/documents/D1001";
constexpr const char* scan = "/servlet/rest/v1/content/streams/10090/x";
#ifdef __SANITIZE_ADDRESS__
// The sanitizer keeps what was given back for a while, and marks all memory in a map of its own.
constexpr long memoryFactor = 8;
#else
constexpr long memoryFactor = 1;
#endif
constexpr long mebibyte = 1024;

using Clients = std::vector<std::unique_ptr<RawClient>>;

/// How many connections this process may hold.
std::size_t Possible(std::size_t wanted) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  // The server keeps 2,500 descriptors for its files, and one client has three quarters of the others.
  const std::size_t possible = static_cast<std::size_t>(limit.rlim_cur - 2500) / 4 * 3;
  if (possible < wanted) std::printf("this machine allows %zu connections and not %zu\n", possible, wanted);
  return std::min(possible, wanted);
}

class UnderLoad : public SimulatorProcess {
 protected:
  /// Somebody else is answered, and answered quickly enough to be called so.
  static void ExpectOthersAreAnswered(int port) {
    const auto begin = std::chrono::steady_clock::now();
    constexpr int requests = 50;
    RawClient kept(port, "127.0.0.2");
    for (int i = 0; i < requests; ++i) {
      EXPECT_EQ(kept.Get(forkPath).status, 200);
      EXPECT_EQ(RawClient(port, "127.0.0.2").Get(forkPath).status, 200);
    }
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - begin;
    std::printf("others: %.2f ms a request\n", took.count() / (2 * requests));
  }

  static void ExpectMemory(const Process& process, long mebibytes) {
    const long peak = process.PeakKilobytes();
    std::printf("highest resident memory: %ld KiB\n", peak);
    EXPECT_GT(peak, 0);
    EXPECT_LT(peak, mebibytes * mebibyte * memoryFactor);
  }
};

TEST_F(UnderLoad, ThousandsOfOpenConnectionsKeepNobodyWaiting) {
  const char* const wanted = std::getenv("VANTRY_SIM_CONNECTIONS");
  const std::size_t count = Possible(wanted != nullptr ? std::strtoul(wanted, nullptr, 10) : 10'000);
  Process process(Arguments());
  const int port = process.ReadyPort();
  ASSERT_GT(port, 0);
  Clients clients;
  for (std::size_t i = 0; i < count; ++i) {
    clients.push_back(std::make_unique<RawClient>(port));
    if (i % 10 == 0) {
      EXPECT_EQ(clients.back()->Get(forkPath).status, 200);
    }
    if (i % 10 == 1) clients.back()->Send("GET / HTTP/1.1\r\nHos");
  }
  std::printf("%zu connections\n", clients.size());
  ExpectOthersAreAnswered(port);
  ExpectMemory(process, 100);
  // The ones that were open all the time are still served.
  for (std::size_t i = 0; i < count; i += 1000) EXPECT_EQ(clients[i]->Get(forkPath).status, 200);
}

TEST_F(UnderLoad, ThousandSlowClientsKeepNobodyWaiting) {
  Process process({"--port", "0", "--data", (directory_ / "data").string(), "--large", "67108864"});
  const int port = process.ReadyPort();
  ASSERT_GT(port, 0);
  Clients readers, writers, heads;
  for (int i = 0; i < 400; ++i) {
    readers.push_back(std::make_unique<RawClient>(port));
    readers.back()->ReceiveLittle();
    readers.back()->Send(std::string("GET ") + scan + " HTTP/1.1\r\nHost: h\r\n\r\n");
    writers.push_back(std::make_unique<RawClient>(port));
    writers.back()->Send(
        "POST /servlet/rest/v1/dkm/documents HTTP/1.1\r\nHost: h\r\nContent-Length: 1000\r\n\r\n");
    if (i % 2 == 0) heads.push_back(std::make_unique<RawClient>(port));
  }
  for (int round = 0; round < 5; ++round) {
    for (const auto& writer : writers) writer->Send("x");
    for (const auto& head : heads) head->Send("G");
  }
  ExpectOthersAreAnswered(port);
  ExpectOthersAreAnswered(port);
  ExpectOthersAreAnswered(port);
  ExpectMemory(process, 150);
}

/// Sends a body in chunks until the server has said what it thinks of it. @return the status
int SendWithoutEnd(RawClient& client, const std::string& head) {
  client.Send(head + "Transfer-Encoding: chunked\r\n\r\n");
  const std::string block = "100000\r\n" + std::string(0x100000, '[') + "\r\n";
  for (int i = 0; i < 64; ++i) client.Send(block);
  return client.Read().status;
}

TEST_F(UnderLoad, BodiesWithoutAnEndAreRefused) {
  Process process(Arguments({"--max-upload", "8000000"}));
  const int port = process.ReadyPort();
  ASSERT_GT(port, 0);
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      RawClient client(port);
      EXPECT_EQ(SendWithoutEnd(client, "POST /servlet/rest/v1/dkm/documents HTTP/1.1\r\nHost: h\r\n"), 413);
    });
  }
  for (std::thread& thread : threads) thread.join();
  const UploadPlan plan = WritingClient(port).Plan();
  RawClient uploads(plan.port);
  EXPECT_EQ(SendWithoutEnd(uploads, plan.head), 413);
  RawClient head(port);
  head.Send("GET / HTTP/1.1\r\nHost: " + std::string(300'000, 'h'));
  EXPECT_EQ(head.Read().status, 431);
  ExpectOthersAreAnswered(port);
  ExpectMemory(process, 150);
  for (const auto& entry : std::filesystem::directory_iterator(directory_ / "data/content"))
    EXPECT_NE(entry.path().filename().string().rfind("incoming-", 0), 0U) << entry.path();
}

TEST_F(UnderLoad, LongBodiesTogetherHaveABound) {
  Process process(Arguments());
  const int port = process.ReadyPort();
  ASSERT_GT(port, 0);
  constexpr std::size_t longLength = 15'000'000;
  const std::string almost(longLength - 1, ' ');
  Clients clients;
  // None of them ends, so that each keeps what it has sent.
  for (int i = 0; i < 24; ++i) {
    clients.push_back(std::make_unique<RawClient>(port));
    clients.back()->Send("POST /servlet/rest/v1/dkm/documents HTTP/1.1\r\nHost: h\r\nContent-Length: " +
                         std::to_string(longLength) + "\r\n\r\n" + almost);
  }
  // 192 MiB hold thirteen of them. Those that are refused hear of it when the server has read so far.
  std::size_t kept = clients.size();
  for (int tries = 0; tries < 100 && kept > 13; ++tries)
    kept -= std::erase_if(clients, [](const auto& client) { return client->Read(50).status == 503; });
  EXPECT_LE(kept, 13U);
  EXPECT_GT(kept, 0U);
  EXPECT_EQ(RawClient(port, "127.0.0.2").Post("/servlet/rest/v1/dkm/documents", "", "{}").status, 403);
  ExpectOthersAreAnswered(port);
  ExpectMemory(process, 500);
  clients.clear();
  // What they held is given back.
  for (int tries = 0; tries < 100; ++tries) {
    if (RawClient(port).Post("/servlet/rest/v1/dkm/documents", "", "{}").status == 403) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  ADD_FAILURE() << "there is no room for a short body";
}

/// A list of 7 MB, more than the system takes for a connection. No other number has the same answer.
std::string LongList(int number) {
  return "/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments?$top=" + std::to_string(39'000 + number);
}

TEST_F(UnderLoad, LongAnswersThatNobodyReadsHaveABound) {
  Process process({"--port", "0", "--data", (directory_ / "data").string(), "--seed", "bulk:40000",
                   "--page-size", "40000"});
  const int port = process.ReadyPort();
  ASSERT_GT(port, 0);
  Clients clients;
  constexpr int clientCount = 36;
  for (int i = 0; i < clientCount; ++i) {
    clients.push_back(std::make_unique<RawClient>(port));
    clients.back()->ReceiveLittle();
    clients.back()->Send("GET " + LongList(i) + " HTTP/1.1\r\nHost: h\r\n\r\n");
  }
  int given = 0, refused = 0;
  for (const auto& client : clients) {
    const int status = client->Read(30'000, true).status;
    given += status == 200 ? 1 : 0;
    refused += status == 503 ? 1 : 0;
  }
  std::printf("%d given, %d refused\n", given, refused);
  EXPECT_EQ(given + refused, clientCount);
  EXPECT_GT(given, 0);
  EXPECT_GT(refused, 0);
  // A quarter is left for others.
  EXPECT_EQ(RawClient(port, "127.0.0.2").Get(LongList(clientCount)).status, 200);
  // What is held, and what the allocator keeps of the making of those that were refused.
  ExpectMemory(process, 600);
  clients.clear();
  for (int tries = 0; tries < 100; ++tries) {
    if (RawClient(port).Get(LongList(clientCount + 1 + tries)).status == 200) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  ADD_FAILURE() << "there is no room for one answer";
}

TEST_F(UnderLoad, BodiesOfManyValuesTakeTheirMemoryOneAtATime) {
  Process process(Arguments());
  const int port = process.ReadyPort();
  ASSERT_GT(port, 0);
  // Four million values are as many as are read, and each takes twenty times its two bytes.
  std::string body = "[0";
  for (int i = 1; i < 4'000'000 - 1; ++i) body += ",0";
  body += "]";
  std::vector<std::thread> threads;
  for (int i = 0; i < 6; ++i) {
    threads.emplace_back([&] {
      EXPECT_EQ(RawClient(port)
                    .Post("/servlet/rest/v1/dkm/documents", "Content-Type: application/json\r\n", body)
                    .status,
                403);
    });
  }
  for (std::thread& thread : threads) thread.join();
  ExpectMemory(process, 600);
}

}  // namespace
}  // namespace vantry_sim
