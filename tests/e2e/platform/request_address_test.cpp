#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"

namespace {

using vtdirect_test::Asking;
using vtdirect_test::Connect;
using vtdirect_test::Fetch;
using vtdirect_test::Fetched;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

/// One after the other on one kept connection: what is kept of an address must not show in the next one.
class RequestAddress : public testing::Test {
 protected:
  RequestAddress() { vtdirect_test::UseShortLimits(); }

  static Fetched FetchTarget(du::http::Connection& connection, const std::string& target) {
    Asking asking;
    asking.uri = target;
    return Fetch(connection, asking);
  }
};

TEST_F(RequestAddress, CarriesEachTargetAsItIs) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "fine"); });
  const auto connection = Connect(server.Url());
  const std::vector<std::string> targets{"/documents/D1?contextId=C1",
                                         "/documents/D2",
                                         "/documents/a%2FB?name=%C3%A4",
                                         "/documents/D3",
                                         "/documents/D3?",
                                         "/a?b?c=[d]",
                                         "//a/../b;c='(1)'!*,$&+:@~",
                                         "/%2f%2F",
                                         "/documents/D4?x=%2F",
                                         "/",
                                         "/?only=query",
                                         "/last"};
  for (const std::string& target : targets) {
    EXPECT_EQ(FetchTarget(*connection, target).body, "fine") << target;
    EXPECT_EQ(server.requests().back().target, target);
  }
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(RequestAddress, ThatIsTooLongIsRefusedAndForgotten) {
  ScriptedServer server([](Peer& peer, WireRequest& request) { peer.Answer(200, request.target); });
  const auto connection = Connect(server.Url());
  const std::string tooLong = "/" + std::string(9'000'000, 'a');
  for (const std::string target : {"/first", "/second?x=1"}) {
    EXPECT_EQ(FetchTarget(*connection, target).body, target);
    EXPECT_EQ(FetchTarget(*connection, tooLong).code, du::http::ErrorCode::NoConnection);
  }
  EXPECT_EQ(FetchTarget(*connection, "/last").body, "/last");
  EXPECT_EQ(server.requests().size(), 3U);
}

TEST_F(RequestAddress, IsWhereARelativeRedirectCountsFrom) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    if (request.target != "/second/folder/one?x=1") return peer.Answer(200, request.target);
    // Too long to be read to its end.
    peer.Answer(302, std::string(2'000'000, 'r'), "Location: other?y=2\r\n");
  });
  const auto connection = Connect(server.Url());
  EXPECT_EQ(FetchTarget(*connection, "/first/document").body, "/first/document");
  EXPECT_EQ(FetchTarget(*connection, "/second/folder/one?x=1").body, "/second/folder/other?y=2");
}

TEST_F(RequestAddress, IsAskedOnceMoreWhenTheConnectionDied) {
  std::atomic<int> asked{0};
  ScriptedServer server([&asked](Peer& peer, WireRequest& request) {
    if (++asked == 2) return peer.Close();
    peer.Answer(200, request.target);
  });
  const auto connection = Connect(server.Url());
  EXPECT_EQ(FetchTarget(*connection, "/first").body, "/first");
  EXPECT_EQ(FetchTarget(*connection, "/second?x=1").body, "/second?x=1");
  EXPECT_EQ(asked, 3);
}

TEST_F(RequestAddress, SaysWhichCookiesGoWithIt) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.Answer(200, request.Header("Cookie"), "Set-Cookie: area=1; Path=/Vantry/area\r\n");
  });
  const auto connection = Connect(server.Url());
  EXPECT_EQ(FetchTarget(*connection, "/Vantry/area/D1").body, "(none)");
  EXPECT_EQ(FetchTarget(*connection, "/Vantry/other/D2").body, "(none)");
  EXPECT_EQ(FetchTarget(*connection, "/Vantry/area/D3").body, "area=1");
}

}  // namespace
