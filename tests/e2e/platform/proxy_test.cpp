#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/support/unused_port.h"

namespace {

using du::http::ErrorCode;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

class Proxy : public testing::Test {
 protected:
  Proxy() { vtdirect_test::UseShortLimits(); }
};

TEST_F(Proxy, ComesFromTheEnvironment) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "direct"); });
  const std::string closed = "http://127.0.0.1:" + std::to_string(vtdirect_test::UnusedPort());
  setenv("http_proxy", closed.c_str(), 1);
  EXPECT_EQ(FetchFrom(server.Url()).code, ErrorCode::NoConnection);
  setenv("no_proxy", "127.0.0.1", 1);
  EXPECT_EQ(FetchFrom(server.Url()).body, "direct");
}

TEST_F(Proxy, IsAskedForTheWholeUrl) {
  ScriptedServer proxy([](Peer& peer, WireRequest&) { peer.Answer(200, "by proxy"); });
  setenv("http_proxy", proxy.Url().c_str(), 1);
  vtdirect_test::Asking asking;
  asking.uri = "a b";
  EXPECT_EQ(FetchFrom("http://vantry.invalid:8080/", asking).body, "by proxy");
  EXPECT_EQ(proxy.requests().at(0).target, "http://vantry.invalid:8080/a%20b");
}

TEST_F(Proxy, ThatRefusesATunnelEndsTheExchange) {
  ScriptedServer proxy([](Peer& peer, WireRequest&) { peer.Answer(403, "no tunnel"); });
  setenv("https_proxy", proxy.Url().c_str(), 1);
  const auto fetched = FetchFrom("https://vantry.invalid/");
  EXPECT_NE(fetched.code, ErrorCode::Done);
  EXPECT_EQ(fetched.status, -77);
  EXPECT_EQ(fetched.body, "");
  EXPECT_EQ(proxy.requests().at(0).method, "CONNECT");
}

}  // namespace
