#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"

namespace {

using du::http::Method;
using testing::ElementsAre;
using testing::HasSubstr;
using vtdirect_test::Asking;
using vtdirect_test::Connect;
using vtdirect_test::Fetch;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

constexpr const char* nonce1 = "nonce=\"nonce-1\"";
constexpr const char* nonce2 = "nonce=\"nonce-2\"";
// By hand: base64 of "paula:s3cret".
constexpr const char* basicPaula = "Basic cGF1bGE6czNjcmV0";

std::string AskDigest(const std::string& more) {
  return "WWW-Authenticate: Digest realm=\"vault\"" + more + "\r\n";
}

/// A write whose handle has no nonce yet when it begins, to a server that is known to want a login by Digest.
class DigestWrite : public testing::Test {
 protected:
  DigestWrite() { vtdirect_test::UseShortLimits(); }
  /// Each request takes a handle of its own, as one that comes while others are under way does.
  static void KeepNoHandle() {
    du::http::TransportSettings settings = du::http::GetTransportSettings();
    settings.idleConnections = 0;
    du::http::SetTransportSettings(settings);
  }
  [[nodiscard]] Asking Post() const {
    Asking asking;
    asking.method = Method::Post;
    asking.body = &body_;
    return asking;
  }
  /// The Authorization lines of the writes, each of which has to bring the whole body.
  [[nodiscard]] std::vector<std::string> LoginsOfWrites(const ScriptedServer& server) const {
    std::vector<std::string> lines;
    for (const WireRequest& request : server.requests()) {
      if (request.method != "POST") continue;
      EXPECT_TRUE(request.body == body_);
      lines.push_back(request.Header("Authorization"));
    }
    return lines;
  }
  const std::string body_ = std::string(100'000, 'p');
};

TEST_F(DigestWrite, TriesAWrongPasswordOnce) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.Answer(401, "", AskDigest(std::string(", ") + nonce1));
  });
  KeepNoHandle();
  du::http::SetPasswordCredentials(server.Url(), "paula", "wrong");
  EXPECT_EQ(FetchFrom(server.Url()).status, 401);
  EXPECT_EQ(FetchFrom(server.Url(), Post()).status, 401);
  EXPECT_THAT(LoginsOfWrites(server), ElementsAre("(none)", HasSubstr("username=\"paula\"")));
}

TEST_F(DigestWrite, AnswersAStaleNonceWithTheNewOne) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    const std::string login = request.Header("Authorization");
    if (login.find(nonce2) != std::string::npos) return peer.Answer(200, "vaulted");
    const bool isStale = login.find(nonce1) != std::string::npos;
    peer.Answer(401, "", AskDigest(std::string(", ") + (isStale ? nonce2 : nonce1) + ", stale=true"));
  });
  KeepNoHandle();
  du::http::SetPasswordCredentials(server.Url(), "paula", "s3cret");
  EXPECT_EQ(FetchFrom(server.Url()).body, "vaulted");
  EXPECT_EQ(FetchFrom(server.Url(), Post()).body, "vaulted");
  EXPECT_THAT(LoginsOfWrites(server), ElementsAre("(none)", HasSubstr(nonce1), HasSubstr(nonce2)));
}

TEST_F(DigestWrite, ShowsOnlyTheProxyItsLoginAtFirst) {
  ScriptedServer proxy([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    if (request.Header("Authorization").find(nonce1) != std::string::npos) {
      return peer.Answer(200, "vaulted");
    }
    peer.Answer(401, "", AskDigest(std::string(", ") + nonce1));
  });
  KeepNoHandle();
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.proxy = proxy.Url();
  du::http::SetTransportSettings(settings);
  du::http::SetProxyCredentials("proxy", "user");
  du::http::SetPasswordCredentials("http://vantry.invalid/", "paula", "s3cret");
  EXPECT_EQ(FetchFrom("http://vantry.invalid/").body, "vaulted");
  EXPECT_EQ(FetchFrom("http://vantry.invalid/", Post()).body, "vaulted");
  EXPECT_THAT(LoginsOfWrites(proxy), ElementsAre("(none)", HasSubstr(nonce1)));
  for (const WireRequest& request : proxy.requests()) {
    EXPECT_EQ(request.Header("Proxy-Authorization"), "Basic cHJveHk6dXNlcg==");  // "proxy:user"
  }
}

TEST_F(DigestWrite, ShowsNoLoginByBasicOfTheSameHandle) {
  std::atomic<bool> takesBasic{true};
  ScriptedServer server([&takesBasic](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    if (!takesBasic) return peer.Answer(401, "", AskDigest(""));
    if (request.Header("Authorization") == basicPaula) return peer.Answer(200, "vaulted");
    peer.Answer(401, "", "WWW-Authenticate: Basic realm=\"vault\"\r\n");
  });
  du::http::SetPasswordCredentials(server.Url(), "paula", "s3cret");
  const auto connection = Connect(server.Url());
  EXPECT_EQ(Fetch(*connection).body, "vaulted");
  takesBasic = false;
  // Without a nonce in the demand, the next write has none for its login.
  EXPECT_EQ(Fetch(*connection).status, 401);
  EXPECT_EQ(Fetch(*connection, Post()).status, 401);
  EXPECT_THAT(LoginsOfWrites(server), ElementsAre("(none)"));
  EXPECT_EQ(server.connections(), 1);
}

}  // namespace
