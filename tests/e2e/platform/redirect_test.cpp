#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/support/temporary_directory.h"

namespace {

using du::http::ErrorCode;
using du::http::Method;
using testing::ElementsAre;
using vtdirect_test::Asking;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

class Redirect : public testing::Test {
 protected:
  Redirect() { vtdirect_test::UseShortLimits(); }
  void TearDown() override { EXPECT_THAT(directory_.Entries(), testing::IsEmpty()); }
  vtdirect_test::TemporaryDirectory directory_;
};

ScriptedServer::Script LeadingTo(const std::string& location, int status = 302) {
  return [location, status](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    if (request.target == "/start") {
      peer.Answer(status, std::string(200'000, 'r'), "Location: " + location + "\r\n");
    } else {
      peer.Answer(200, "arrived at " + request.target);
    }
  };
}

Asking FromStart(Method method = Method::Get) {
  Asking asking;
  asking.method = method;
  asking.uri = "/start";
  asking.headers = "Accept: text/plain\r\nX-Nonce: canary-nonce";
  return asking;
}

TEST_F(Redirect, IsFollowedByARead) {
  for (const int status : {301, 302, 303, 307, 308}) {
    ScriptedServer server(LeadingTo("/next?a=1#part", status));
    const Fetched fetched = FetchFrom(server.Url(), FromStart());
    EXPECT_EQ(fetched.status, 200);
    EXPECT_EQ(fetched.body, "arrived at /next?a=1");
    EXPECT_EQ(fetched.begun, 1);
    EXPECT_EQ(server.connections(), 1);
  }
}

TEST_F(Redirect, TakesALocationInEveryForm) {
  const struct {
    const char* location;
    const char* target;
  } cases[] = {{"next", "/next"}, {"?q=2", "/start?q=2"}, {"/a b", "/a%20b"}, {"/a|b?c=\"", "/a%7Cb?c=%22"}};
  for (const auto& example : cases) {
    ScriptedServer server(LeadingTo(example.location));
    EXPECT_EQ(FetchFrom(server.Url(), FromStart()).body, std::string("arrived at ") + example.target);
  }
}

TEST_F(Redirect, KeepsTheCallersLinesOnItsOwnOrigin) {
  ScriptedServer server(LeadingTo("/next"));
  du::http::SetBearerToken(server.Url(), "token-1");
  FetchFrom(server.Url(), FromStart());
  EXPECT_EQ(server.requests().at(1).Header("X-Nonce"), "canary-nonce");
  EXPECT_EQ(server.requests().at(1).Header("Authorization"), "Bearer token-1");
}

TEST_F(Redirect, CarriesNothingSecretToAnotherOrigin) {
  ScriptedServer other(LeadingTo("/"));
  ScriptedServer server(LeadingTo(other.Url() + "/elsewhere"));
  du::http::SetBearerToken(server.Url(), "token-1");
  du::http::SetBearerToken(other.Url(), "token-2");
  EXPECT_EQ(FetchFrom(server.Url(), FromStart()).body, "arrived at /elsewhere");
  EXPECT_EQ(server.requests().at(0).Header("Authorization"), "Bearer token-1");
  EXPECT_THAT(other.requests().at(0).HeaderNames(),
              ElementsAre("Host", "User-Agent", "X-Zvk-Connected", "Accept", "Accept-Encoding"));
}

TEST_F(Redirect, CarriesNothingSecretOnTheWayBackEither) {
  ScriptedServer* home = nullptr;
  ScriptedServer other([&home](Peer& peer, WireRequest&) {
    peer.Answer(302, "", "Location: " + home->Url() + "/change?everything\r\n");
  });
  ScriptedServer server(LeadingTo(other.Url() + "/elsewhere"));
  home = &server;
  du::http::SetBearerToken(server.Url(), "token-1");
  EXPECT_EQ(FetchFrom(server.Url(), FromStart()).body, "arrived at /change?everything");
  EXPECT_EQ(server.requests().at(1).Header("Authorization"), "(none)");
  EXPECT_EQ(server.requests().at(1).Header("X-Nonce"), "(none)");
}

TEST_F(Redirect, AsksNobodyForAForeignOrigin) {
  ScriptedServer other([](Peer& peer, WireRequest&) {
    peer.Answer(401, "who?", "WWW-Authenticate: Basic realm=\"other\"\r\n");
  });
  ScriptedServer server(LeadingTo(other.Url() + "/elsewhere"));
  Asking asking = FromStart();
  int asked = 0;
  asking.reauthenticate = [&asked] { return ++asked > 0; };
  const Fetched fetched = FetchFrom(server.Url(), asking);
  EXPECT_EQ(fetched.status, 401);
  EXPECT_EQ(fetched.body, "who?");
  EXPECT_EQ(asked, 0);
}

TEST_F(Redirect, OfARequestWithABodyIsReported) {
  for (const Method method : {Method::Post, Method::Patch}) {
    ScriptedServer server(LeadingTo("/next", 307));
    const std::string body = "body";
    Asking asking = FromStart(method);
    asking.body = &body;
    const Fetched fetched = FetchFrom(server.Url(), asking);
    EXPECT_EQ(fetched.status, 307);
    EXPECT_TRUE(fetched.body == std::string(64 * 1024, 'r'));
    EXPECT_EQ(server.requests().size(), 1u);
  }
}

TEST_F(Redirect, ThatLeadsNowhereIsReported) {
  for (const char* location :
       {"ftp://127.0.0.1/x", "file:///etc/passwd", "http://127.0.0.1:99999/", "mailto:paula"}) {
    ScriptedServer server(LeadingTo(location));
    const Fetched fetched = FetchFrom(server.Url(), FromStart());
    EXPECT_EQ(fetched.code, ErrorCode::Done) << location;
    EXPECT_EQ(fetched.status, 302) << location;
    EXPECT_TRUE(fetched.body == std::string(64 * 1024, 'r')) << location;
    EXPECT_EQ(fetched.begun, 1);
  }
}

TEST_F(Redirect, WithoutALocationIsReported) {
  for (const int status : {300, 301, 304}) {
    ScriptedServer server([status](Peer& peer, WireRequest&) {
      peer.Send("HTTP/1.1 " + std::to_string(status) + " Somewhere\r\nContent-Length: 0\r\n\r\n");
    });
    EXPECT_EQ(FetchFrom(server.Url()).status, status);
  }
}

TEST_F(Redirect, InACircleEndsAtTheLimit) {
  ScriptedServer server(LeadingTo("/start"));
  const Fetched fetched = FetchFrom(server.Url(), FromStart());
  EXPECT_EQ(fetched.status, 302);
  EXPECT_TRUE(fetched.body == std::string(64 * 1024, 'r'));
  EXPECT_EQ(server.requests().size(), 11u);
}

TEST_F(Redirect, IsNotFollowedWithALimitOfZero) {
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.redirects = 0;
  du::http::SetTransportSettings(settings);
  ScriptedServer server(LeadingTo("/next"));
  EXPECT_EQ(FetchFrom(server.Url(), FromStart()).status, 302);
  EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(Redirect, DropsUserAndPasswordOfItsLocation) {
  ScriptedServer other(LeadingTo("/"));
  ScriptedServer server(LeadingTo("http://eve:pw@127.0.0.1:" + std::to_string(other.port()) + "/x"));
  EXPECT_EQ(FetchFrom(server.Url(), FromStart()).body, "arrived at /x");
  EXPECT_EQ(other.requests().at(0).Header("Authorization"), "(none)");
}

}  // namespace
