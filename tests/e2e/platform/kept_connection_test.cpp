#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <utility>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"

namespace {

using du::http::ErrorCode;
using du::http::Method;
using vtdirect_test::Asking;
using vtdirect_test::Connect;
using vtdirect_test::Fetch;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

class KeptConnection : public testing::Test {
 protected:
  KeptConnection() { vtdirect_test::UseShortLimits(); }
};

TEST_F(KeptConnection, IsOneForTwoThousandRequests) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "fine"); });
  const auto connection = Connect(server.Url());
  for (int i = 0; i < 2000; ++i) {
    Asking asking;
    asking.uri = "/servlet/rest/v1/dkm/documents/D" + std::to_string(i);
    ASSERT_EQ(Fetch(*connection, asking).status, 200);
  }
  EXPECT_EQ(server.connections(), 1);
  EXPECT_EQ(server.requests().back().target, "/servlet/rest/v1/dkm/documents/D1999");
}

TEST_F(KeptConnection, IsMadeAnewWhenItDied) {
  ScriptedServer server([](Peer& peer, WireRequest&) {
    peer.Answer(200, "fine");
    peer.Close();
  });
  const auto connection = Connect(server.Url());
  for (int i = 0; i < 5; ++i) EXPECT_EQ(Fetch(*connection).body, "fine");
  EXPECT_EQ(server.connections(), 5);
}

TEST_F(KeptConnection, ThatDiesUnderAReadIsAskedOnceMore) {
  std::atomic<int> asked{0};
  ScriptedServer server([&asked](Peer& peer, WireRequest&) {
    if (++asked == 2) return peer.Close();
    peer.Answer(200, "fine");
  });
  const auto connection = Connect(server.Url());
  EXPECT_EQ(Fetch(*connection).body, "fine");
  EXPECT_EQ(Fetch(*connection).body, "fine");
  EXPECT_EQ(asked, 3);
}

TEST_F(KeptConnection, ThatDiesUnderABodyNeverGetsItTwice) {
  // The server may have created the document before it fell silent.
  std::atomic<int> posted{0};
  ScriptedServer server([&posted](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    if (request.method == "POST") {
      ++posted;
      return peer.Close();
    }
    peer.Answer(200, "fine");
  });
  const auto connection = Connect(server.Url());
  EXPECT_EQ(Fetch(*connection).body, "fine");
  const std::string body = "create me";
  Asking asking;
  asking.method = Method::Post;
  asking.body = &body;
  EXPECT_EQ(Fetch(*connection, asking).code, ErrorCode::ProtocolFailure);
  EXPECT_EQ(posted, 1);
}

TEST_F(KeptConnection, IsUsedByEveryConnectionObjectOfItsOrigin) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "fine"); });
  for (int i = 0; i < 50; ++i) EXPECT_EQ(FetchFrom(server.Url()).body, "fine");
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(KeptConnection, ServesOnAfterACancelAndAnException) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, std::string(3'000'000, 'x')); });
  const auto connection = Connect(server.Url());
  du::http::BufferFileSource headers(nullptr, 0);
  int status = 0;
  const auto fetchInto = [&](du::http::FileSink& sink) {
    const du::http::Request request{Method::Get, "/", &headers, nullptr, nullptr, &sink};
    return du::http::DoRequestWithCommonAuth(*connection, {nullptr, {}}, request, &status);
  };
  for (int i = 0; i < 3; ++i) {
    du::http::ProgressSink cancelling([](std::size_t, std::size_t) { return false; }, nullptr);
    EXPECT_EQ(fetchInto(cancelling), ErrorCode::Cancelled);
    du::http::ProgressSink throwing([](std::size_t, std::size_t) -> bool { throw 7; }, nullptr);
    EXPECT_THROW(static_cast<void>(fetchInto(throwing)), int);
    EXPECT_TRUE(Fetch(*connection).body == std::string(3'000'000, 'x'));
  }
}

TEST_F(KeptConnection, IsClosedWhenItWasIdleForTooLong) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "fine"); });
  ScriptedServer other([](Peer& peer, WireRequest&) { peer.Answer(200, "fine"); });
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.idleSeconds = 1;
  du::http::SetTransportSettings(settings);
  FetchFrom(server.Url());
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  // Whoever comes next closes it, be it on the way to another server.
  FetchFrom(other.Url());
  EXPECT_TRUE(vtdirect_test::ComesTrue([&server] { return server.openConnections() == 0; }));
  FetchFrom(server.Url());
  EXPECT_EQ(server.connections(), 2);
}

TEST_F(KeptConnection, IsOneOfNoMoreThanAreWanted) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.Answer(200, request.target == "/large" ? std::string(2'000'000, 'x') : "small");
  });
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.idleConnections = 2;
  du::http::SetTransportSettings(settings);
  // Each transfer's callback begins the next one, so that there are four at one time.
  const auto connection = Connect(server.Url());
  du::http::BufferFileSource headers(nullptr, 0);
  std::function<void(int)> fetch = [&](int deeper) {
    bool begun = false;
    du::http::ProgressSink sink(
        [&](std::size_t, std::size_t) {
          if (deeper > 0 && !std::exchange(begun, true)) fetch(deeper - 1);
          return true;
        },
        nullptr);
    const du::http::Request request{Method::Get, "/large", &headers, nullptr, nullptr, &sink};
    int status = 0;
    EXPECT_EQ(du::http::DoRequestWithCommonAuth(*connection, {nullptr, {}}, request, &status),
              ErrorCode::Done);
  };
  fetch(3);
  EXPECT_EQ(server.connections(), 4);
  EXPECT_TRUE(vtdirect_test::ComesTrue([&server] { return server.openConnections() == 2; }));
  EXPECT_EQ(Fetch(*connection).body, "small");
  EXPECT_EQ(server.connections(), 4);
}

TEST_F(KeptConnection, IsNotKeptWhereNoneAreWanted) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "fine"); });
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.idleConnections = 0;
  du::http::SetTransportSettings(settings);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(FetchFrom(server.Url()).body, "fine");
  EXPECT_EQ(server.connections(), 3);
}

}  // namespace
