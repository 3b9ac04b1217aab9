// Many connections, slow ones, and clients that mean no good.
#include <chrono>
#include <thread>

#include "raw_client.h"
#include "simulator/wire/server_group.h"
#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

const std::string ask = "GET /servlet/OrvetGW HTTP/1.1\r\nHost: h\r\n\r\n";
const std::string halfAHead = "GET /servlet/OrvetGW HTTP/1.1\r\nHost";

class ConnectionGateTest : public SimulatorTest {
 protected:
  ~ConnectionGateTest() override {
    if (!servers_) return;
    servers_->Stop();
    thread_.join();
    servers_.reset();
  }

  int Serve() {
    options_.port = 0;
    log_ = std::make_unique<RequestLog>("");
    servers_ = std::make_unique<ServerGroup>(Start(), *log_, limits_);
    EXPECT_EQ(servers_->Bind(), -1);
    thread_ = std::thread([this] { servers_->Run(); });
    return servers_->port();
  }

  using Clients = std::vector<std::unique_ptr<RawClient>>;
  static Clients Connect(int port, int count, const std::string& bytes,
                         const std::string& from = "127.0.0.1") {
    Clients clients;
    for (int i = 0; i < count; ++i) {
      clients.push_back(std::make_unique<RawClient>(port, from));
      clients.back()->Send(bytes);
    }
    return clients;
  }

  GateLimits limits_;
  std::unique_ptr<RequestLog> log_;
  std::unique_ptr<ServerGroup> servers_;
  std::thread thread_;
};

TEST_F(ConnectionGateTest, HeadThatComesByteByByteIsServed) {
  RawClient client(Serve());
  for (const char c : ask) client.Send(std::string(1, c));
  EXPECT_EQ(client.Read().status, 200);
}

TEST_F(ConnectionGateTest, RefusedClientThatSendsOnIsLeftInTheEnd) {
  RawClient client(Serve());
  client.Send("GET /x HTTP/1.1\r\nHost: h\r\nContent-Length: 100000000\r\n\r\n");
  EXPECT_EQ(client.Read().status, 400);
  // It is never silent for as long as the server waits for a silent one.
  bool closed = false;
  for (int i = 0; i < 100 && !closed; ++i) {
    client.Send("x");
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    closed = client.WasReset();
  }
  EXPECT_TRUE(closed);
}

TEST_F(ConnectionGateTest, BodyThatTricklesIsRefusedAndOneThatFlowsIsNot) {
  limits_.body = std::chrono::milliseconds(300);
  const int port = Serve();
  RawClient slow(port), quick(port);
  const std::string head = "POST /servlet/rest/v1/dkm/documents HTTP/1.1\r\nHost: h\r\nContent-Length: ";
  slow.Send(head + "100\r\n\r\n");
  quick.Send(head + "11000\r\n\r\n" + std::string(1000, 'x'));
  // A byte each time for the one and a kilobyte for the other, and never a silence.
  for (int i = 0; i < 10; ++i) {
    slow.Send("x");
    quick.Send(std::string(1000, 'x'));
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
  }
  EXPECT_EQ(slow.Read().status, 400);
  EXPECT_EQ(quick.Read().status, 403);
}

TEST_F(ConnectionGateTest, HalfSentHeadsKeepNobodyWaiting) {
  // Far more of them than requests that may be served at a time.
  limits_.atWork = 4;
  limits_.atWorkForAClient = 3;
  const int port = Serve();
  const Clients silent = Connect(port, 200, halfAHead);
  RawClient other(port);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(other.Get("/servlet/OrvetGW").status, 200);
}

TEST_F(ConnectionGateTest, HeadThatTakesTooLongIsRefusedHoweverItTrickles) {
  limits_.head = std::chrono::milliseconds(200);
  RawClient client(Serve());
  client.Send(halfAHead);
  for (int i = 0; i < 4; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    client.Send("a");
  }
  EXPECT_EQ(client.Read().status, 408);
  EXPECT_TRUE(client.ClosedByServer());
}

TEST_F(ConnectionGateTest, AnswerThatNobodyTakesIsGivenUpInTheEnd) {
  limits_.answer = std::chrono::milliseconds(200);
  // More than the system holds for a client that reads nothing.
  options_.seed.largeBytes = 32 * 1024 * 1024;
  RawClient client(Serve());
  client.ReceiveLittle();
  client.Send("GET /servlet/rest/v1/content/streams/10090/x HTTP/1.1\r\nHost: h\r\n\r\n");
  RequestFilter givenUp;
  givenUp.status = 200;
  const auto ended = simulator_->history().Wait(givenUp, 1, std::chrono::minutes(1));
  ASSERT_EQ(ended.size(), 1u);
  EXPECT_LT(ended.front().answerBytes, options_.seed.largeBytes);
}

TEST_F(ConnectionGateTest, BodiesForTheAdminPortTakeNoMoreThanTheirPartOfTheMemory) {
  options_.adminPort = 0;
  Serve();
  // Bodies that lack their last byte, so that the memory stays taken: a fourth one is too much for one client.
  const std::size_t size = 16 * 1024 * 1024;
  const std::string request =
      "PUT /tree HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: " + std::to_string(size) + "\r\n\r\n" +
      std::string(size - 1, ' ');
  const Clients clients = Connect(servers_->adminPort(), 4, request);
  int refused = 0;
  // Whichever comes last, and maybe another one before the room of that is free again.
  for (int round = 0; round < 600 && refused == 0; ++round) {
    for (const auto& client : clients) refused += client->Read(25).status == 503 ? 1 : 0;
  }
  EXPECT_GE(refused, 1);
  EXPECT_LT(refused, 4);
}

TEST_F(ConnectionGateTest, SilentConnectionIsClosedWithoutAWord) {
  limits_.idle = std::chrono::milliseconds(100);
  RawClient client(Serve());
  EXPECT_EQ(client.Get("/servlet/OrvetGW").status, 200);
  EXPECT_TRUE(client.ClosedByServer());
}

TEST_F(ConnectionGateTest, WhereThereIsNoRoomTheLongestSilentGoes) {
  limits_.connections = 5;
  const int port = Serve();
  RawClient first(port);
  ASSERT_EQ(first.Get("/servlet/OrvetGW").status, 200);
  const Clients half = Connect(port, 4, halfAHead);
  RawClient sixth(port);
  EXPECT_EQ(sixth.Get("/servlet/OrvetGW").status, 200);
  // A half-sent head goes before a connection that has served somebody.
  EXPECT_TRUE(half[0]->ClosedByServer());
  EXPECT_EQ(first.Get("/servlet/OrvetGW").status, 200);
}

TEST_F(ConnectionGateTest, ClientWithTooManyConnectionsLosesItsOwn) {
  limits_.connectionsOfAClient = 3;
  const int port = Serve();
  RawClient other(port, "127.0.0.2");
  ASSERT_EQ(other.Get("/servlet/OrvetGW").status, 200);
  const Clients flood = Connect(port, 30, halfAHead);
  EXPECT_EQ(RawClient(port).Get("/servlet/OrvetGW").status, 200);
  EXPECT_TRUE(flood[0]->ClosedByServer());
  EXPECT_EQ(other.Get("/servlet/OrvetGW").status, 200);
}

TEST_F(ConnectionGateTest, ClientWithTooManyRequestsAtWorkWaitsForItsOwn) {
  limits_.atWorkForAClient = 2;
  options_.faults = {"GET *contexts=stall"};
  const int port = Serve();
  Clients stalled = Connect(port, 5, "GET /servlet/rest/v1/contexts HTTP/1.1\r\nHost: h\r\n\r\n");
  RawClient own(port);
  own.Send(ask);
  EXPECT_EQ(own.Read(200).status, 0);
  EXPECT_EQ(RawClient(port, "127.0.0.2").Get("/servlet/OrvetGW").status, 200);
  stalled.clear();
  EXPECT_EQ(own.Read().status, 200);
}

TEST_F(ConnectionGateTest, RefusedWhereEverybodyIsAtWork) {
  limits_.connections = 2;
  options_.faults = {"GET *contexts=stall"};
  const int port = Serve();
  const Clients stalled = Connect(port, 2, "GET /servlet/rest/v1/contexts HTTP/1.1\r\nHost: h\r\n\r\n");
  ASSERT_EQ(simulator_->history().Wait({.arrived = true}, 2, std::chrono::seconds(60)).size(), 2U);
  RawClient third(port);
  EXPECT_EQ(third.Read().status, 503);
  EXPECT_TRUE(third.ClosedByServer());
}

TEST_F(ConnectionGateTest, ConnectionsThatComeAndGoLeaveNothingBehind) {
  limits_.connections = 20;
  const int port = Serve();
  for (int i = 0; i < 500; ++i) {
    RawClient client(port);
    if (i % 3 == 0) client.Send(halfAHead);
    if (i % 3 == 1) {
      ASSERT_EQ(client.Get("/servlet/OrvetGW").status, 200) << i;
    }
  }
  EXPECT_EQ(RawClient(port).Get("/servlet/OrvetGW").status, 200);
}

}  // namespace
}  // namespace vantry_sim
