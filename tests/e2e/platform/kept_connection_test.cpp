#include <gtest/gtest.h>

#include <atomic>

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

TEST_F(KeptConnection, KeepsCookiesForItselfAlone) {
  ScriptedServer server(
      [](Peer& peer, WireRequest&) { peer.Answer(200, "", "Set-Cookie: session=s1; Path=/\r\n"); });
  const auto connection = Connect(server.Url());
  Fetch(*connection);
  Fetch(*connection);
  FetchFrom(server.Url());
  EXPECT_EQ(server.requests().at(0).Header("Cookie"), "(none)");
  EXPECT_EQ(server.requests().at(1).Header("Cookie"), "session=s1");
  EXPECT_EQ(server.requests().at(2).Header("Cookie"), "(none)");
}

}  // namespace
