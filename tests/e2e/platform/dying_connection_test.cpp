#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <random>
#include <set>
#include <thread>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"

namespace {

using du::http::ErrorCode;
using du::http::Method;
using vtdirect_test::Asking;
using vtdirect_test::Connect;
using vtdirect_test::Fetch;
using vtdirect_test::Fetched;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

/// A server closes a kept connection when it sees fit, be it at the moment when a request sets out.
class DyingConnection : public testing::Test {
 protected:
  DyingConnection() { vtdirect_test::UseShortLimits(); }
  static Asking Reading() { return {}; }
  static Asking Writing(Method method, const std::string* body) {
    Asking asking;
    asking.method = method;
    asking.body = body;
    return asking;
  }
  /// Every way to write, with a body and without one.
  static std::vector<Asking> AllWrites() {
    static const std::string body = "create me";
    return {Writing(Method::Post, &body), Writing(Method::Patch, &body), Writing(Method::Post, nullptr),
            Writing(Method::Patch, nullptr)};
  }
};

TEST_F(DyingConnection, ThatClosedBeforeTheRequestCostsNothing) {
  std::vector<Asking> all = AllWrites();
  all.push_back(Reading());
  for (const Asking& asking : all) {
    ScriptedServer server([](Peer& peer, WireRequest& request) {
      peer.ReadBody(&request);
      peer.Answer(200, "fine");
      if (request.connection == 1) peer.Close();
    });
    const auto connection = Connect(server.Url());
    EXPECT_EQ(Fetch(*connection).body, "fine");
    ASSERT_TRUE(vtdirect_test::ComesTrue([&server] { return server.openConnections() == 0; }));
    EXPECT_EQ(Fetch(*connection, asking).body, "fine");
    EXPECT_EQ(server.requests().size(), 2u);
  }
}

TEST_F(DyingConnection, ThatClosesInTheMiddleOfAHeadCostsAReadNothing) {
  // The head is longer than what the server reads of it.
  std::vector<Asking> all = AllWrites();
  all.push_back(Reading());
  for (Asking& asking : all) {
    asking.headers = "X-Long: " + std::string(90'000, 'h');
    for (const bool reset : {false, true}) {
      ScriptedServer server([reset](Peer& peer, WireRequest& request) {
        peer.ReadBody(&request);
        peer.Answer(200, "fine");
        if (request.connection > 1) return;
        peer.ReadBytes(10);
        reset ? peer.Reset() : peer.Close();
      });
      const auto connection = Connect(server.Url());
      EXPECT_EQ(Fetch(*connection).body, "fine");
      const bool reads = asking.method == Method::Get;
      EXPECT_EQ(Fetch(*connection, asking).code, reads ? ErrorCode::Done : ErrorCode::ProtocolFailure);
      EXPECT_EQ(server.requests().size(), reads ? 2u : 1u);
    }
  }
}

TEST_F(DyingConnection, ThatClosesAfterAHeadNeverGetsAWriteTwice) {
  // The server may have done what it was told before it fell silent.
  std::vector<Asking> all = AllWrites();
  all.push_back(Reading());
  for (const Asking& asking : all) {
    for (const bool reset : {false, true}) {
      ScriptedServer server([reset](Peer& peer, WireRequest& request) {
        peer.ReadBody(&request);
        if (request.connection == 1 && request.target == "/now") return reset ? peer.Reset() : peer.Close();
        peer.Answer(200, "fine");
      });
      const auto connection = Connect(server.Url());
      EXPECT_EQ(Fetch(*connection).body, "fine");
      Asking now = asking;
      now.uri = "/now";
      const bool reads = asking.method == Method::Get;
      EXPECT_EQ(Fetch(*connection, now).code, reads ? ErrorCode::Done : ErrorCode::ProtocolFailure);
      EXPECT_EQ(server.requests().size(), reads ? 3u : 2u);
    }
  }
}

TEST_F(DyingConnection, CostsAReadNothingHoweverOftenItHappens) {
  // Each connection serves one request and closes on the next.
  std::mutex mutex;
  std::set<int> served;
  ScriptedServer server([&](Peer& peer, WireRequest& request) {
    const std::lock_guard lock(mutex);
    served.insert(request.connection).second ? peer.Answer(200, "fine") : peer.Close();
  });
  const auto connection = Connect(server.Url());
  for (int i = 0; i < 40; ++i) EXPECT_EQ(Fetch(*connection).body, "fine") << i;
}

TEST_F(DyingConnection, AfterADemandGetsNoBodyASecondTime) {
  // The demand allowed one more try. That one may have been acted on.
  std::atomic<int> bodies{0};
  ScriptedServer server([&bodies](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    // Each nonce serves one request.
    const std::string wanted = request.method == "GET" ? "nonce-1" : "nonce-2";
    if (request.Header("Authorization").find(wanted) == std::string::npos) {
      return peer.Answer(
          401, "", "WWW-Authenticate: Digest realm=\"vault\", nonce=\"" + wanted + "\", stale=true\r\n");
    }
    if (request.method == "GET") return peer.Answer(200, "fine");
    ++bodies;
    peer.Close();
  });
  du::http::SetPasswordCredentials(server.Url(), "paula", "s3cret");
  const auto connection = Connect(server.Url());
  EXPECT_EQ(Fetch(*connection).body, "fine");
  const std::string body = "create me";
  EXPECT_EQ(Fetch(*connection, Writing(Method::Post, &body)).code, ErrorCode::ProtocolFailure);
  EXPECT_EQ(bodies, 1);
}

TEST_F(DyingConnection, AtAnyMomentCostsNoReadAndDoublesNoWrite) {
  // A millisecond before, during and after the head: both sides wait a random while.
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  std::atomic<int> pause{0};
  std::atomic<int> writes{0};
  ScriptedServer server([&](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    if (request.method != "GET") ++writes;
    peer.Answer(200, "fine");
    std::this_thread::sleep_for(std::chrono::microseconds(pause));
    peer.Close();
  });
  const auto connection = Connect(server.Url());
  for (const Asking& asking : AllWrites()) {
    for (int i = 0; i < 40; ++i) {
      pause = static_cast<int>(random() % 2000);
      EXPECT_EQ(Fetch(*connection).body, "fine");
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
      const int before = writes;
      const bool done = Fetch(*connection, asking).code == ErrorCode::Done;
      const int times = writes - before;
      EXPECT_TRUE(times == 1 || (times == 0 && !done)) << times;
    }
  }
}

}  // namespace
