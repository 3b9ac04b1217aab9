#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/support/temporary_directory.h"

namespace {

using testing::ElementsAre;
using vtdirect_test::Asking;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

constexpr const char* askBasic = "WWW-Authenticate: Basic realm=\"vault\"\r\n";
constexpr const char* basicPaula = "Basic cGF1bGE6czNjcmV0";  // base64 of "paula:s3cret"

/// A server that is listed with http and sends everybody to https on its own host. `vault_` answers there,
/// behind a TLS front; what it answers is the test's.
class SecuredRedirect : public testing::Test {
 protected:
  void SetUp() override {
    vtdirect_test::UseShortLimits();
    if (!vtdirect_test::HaveOpenSsl())
      GTEST_SKIP() << "the openssl program, which makes certificates, is missing";
    vtdirect_test::Trust(
        vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1,DNS:localhost"));
    front_ = std::make_unique<vtdirect_test::TlsFront>(directory_.path(), "server", vault_.port());
    location_ = front_->Url() + "/doc";
  }
  /// The vault lets in who brings this, and else demands a login.
  void Guard(const std::string& wanted) {
    script_ = [wanted](Peer& peer, WireRequest& request) {
      if (request.Header("Authorization") == wanted) return peer.Answer(200, "vaulted");
      peer.Answer(401, "who?", askBasic);
    };
  }
  Asking Doc() {
    Asking asking;
    asking.uri = "/doc";
    asking.headers = "Accept: text/plain\r\nX-Nonce: n1";
    asking.reauthenticate = [this] {
      ++asked_;
      return answer_ && answer_();
    };
    return asking;
  }
  std::vector<std::string> Authorizations() const {
    std::vector<std::string> lines;
    for (const WireRequest& request : vault_.requests()) lines.push_back(request.Header("Authorization"));
    return lines;
  }

  vtdirect_test::TemporaryDirectory directory_;
  std::string location_;
  std::function<bool()> answer_;
  int asked_ = 0;
  ScriptedServer::Script script_ = [](Peer& peer, WireRequest&) { peer.Answer(200, "open"); };
  ScriptedServer vault_{[this](Peer& peer, WireRequest& request) { script_(peer, request); }};
  ScriptedServer plain_{
      [this](Peer& peer, WireRequest&) { peer.Answer(301, "moved", "Location: " + location_ + "\r\n"); }};
  std::unique_ptr<vtdirect_test::TlsFront> front_;
};

TEST_F(SecuredRedirect, CarriesTheLoginOfTheHttpsOriginAndTheCallersLines) {
  Guard("Bearer t-https");
  du::http::SetBearerToken(front_->Url(), "t-https");
  du::http::SetBearerToken(plain_.Url(), "t-http");
  EXPECT_EQ(FetchFrom(plain_.Url(), Doc()).body, "vaulted");
  EXPECT_THAT(Authorizations(), ElementsAre("Bearer t-https"));
  EXPECT_EQ(vault_.requests().at(0).Header("X-Nonce"), "n1");
  EXPECT_EQ(plain_.requests().at(0).Header("Authorization"), "Bearer t-http");
  EXPECT_EQ(asked_, 0);
}

TEST_F(SecuredRedirect, AsksTheHostWhichMayAnswerForTheHttpsOrigin) {
  Guard(basicPaula);
  answer_ = [this] {
    du::http::SetPasswordCredentials(front_->Url(), "paula", "s3cret");
    return true;
  };
  EXPECT_EQ(FetchFrom(plain_.Url(), Doc()).body, "vaulted");
  EXPECT_EQ(asked_, 1);
  EXPECT_THAT(Authorizations(), ElementsAre("(none)", basicPaula));
  // The next one finds it there.
  EXPECT_EQ(FetchFrom(plain_.Url(), Doc()).body, "vaulted");
  EXPECT_EQ(asked_, 1);
}

TEST_F(SecuredRedirect, AsksTheHostWhichMayAnswerForTheHttpOriginThatItKnows) {
  Guard(basicPaula);
  answer_ = [this] {
    du::http::SetPasswordCredentials(plain_.Url(), "paula", "s3cret");
    return true;
  };
  EXPECT_EQ(FetchFrom(plain_.Url(), Doc()).body, "vaulted");
  EXPECT_EQ(FetchFrom(plain_.Url(), Doc()).body, "vaulted");
  EXPECT_EQ(asked_, 1);
}

TEST_F(SecuredRedirect, TriesTheLoginOfTheHttpOriginWhenOneIsDemandedAndNotBefore) {
  Guard("Bearer t-http");
  du::http::SetBearerToken(plain_.Url(), "t-http");
  EXPECT_EQ(FetchFrom(plain_.Url(), Doc()).body, "vaulted");
  EXPECT_THAT(Authorizations(), ElementsAre("(none)", "Bearer t-http"));
  EXPECT_EQ(asked_, 0);
}

TEST_F(SecuredRedirect, GivesTheLoginOfTheHttpOriginToNobodyWhoHasNotDemandedIt) {
  du::http::SetBearerToken(plain_.Url(), "t-http");
  du::http::SetPasswordCredentials(plain_.Url(), "paula", "s3cret");
  EXPECT_EQ(FetchFrom(plain_.Url(), Doc()).body, "open");
  EXPECT_THAT(Authorizations(), ElementsAre("(none)"));
}

TEST_F(SecuredRedirect, ReportsTheDemandWhenNobodyCanAnswerIt) {
  Guard("never");
  du::http::SetBearerToken(plain_.Url(), "t-http");
  const Fetched fetched = FetchFrom(plain_.Url(), Doc());
  EXPECT_EQ(fetched.status, 401);
  EXPECT_EQ(fetched.body, "who?");
  EXPECT_EQ(asked_, 1);
}

TEST_F(SecuredRedirect, SharesTheSessionOfTheHttpsOrigin) {
  script_ = [](Peer& peer, WireRequest&) {
    peer.Answer(200, "", "Set-Cookie: session=7; Path=/; Secure\r\n");
  };
  FetchFrom(front_->Url(), Doc());
  FetchFrom(plain_.Url(), Doc());
  EXPECT_EQ(vault_.requests().at(1).Header("Cookie"), "session=7");
}

TEST_F(SecuredRedirect, ToAnotherNameOfTheSameMachineCarriesNothing) {
  Guard("Bearer t-https");
  const std::string other = "https://localhost" + front_->Url().substr(front_->Url().rfind(':'));
  location_ = other + "/doc";
  du::http::SetBearerToken(other, "t-https");
  du::http::SetBearerToken(plain_.Url(), "t-http");
  EXPECT_EQ(FetchFrom(plain_.Url(), Doc()).status, 401);
  EXPECT_THAT(Authorizations(), ElementsAre("(none)"));
  EXPECT_EQ(vault_.requests().at(0).Header("X-Nonce"), "(none)");
  EXPECT_EQ(asked_, 0);
}

TEST_F(SecuredRedirect, AfterAWayThroughAnotherHostCarriesNothing) {
  Guard("Bearer t-https");
  ScriptedServer between(
      [this](Peer& peer, WireRequest&) { peer.Answer(302, "", "Location: " + front_->Url() + "/doc\r\n"); });
  location_ = "http://localhost:" + std::to_string(between.port()) + "/";
  du::http::SetBearerToken(front_->Url(), "t-https");
  EXPECT_EQ(FetchFrom(plain_.Url(), Doc()).status, 401);
  EXPECT_THAT(Authorizations(), ElementsAre("(none)"));
}

TEST_F(SecuredRedirect, CarriesNothingFurtherOn) {
  ScriptedServer last([](Peer& peer, WireRequest&) { peer.Answer(200, "last"); });
  vtdirect_test::TlsFront lastFront(directory_.path(), "server", last.port());
  script_ = [&lastFront](Peer& peer, WireRequest&) {
    peer.Answer(302, "", "Location: " + lastFront.Url() + "/x\r\n");
  };
  du::http::SetBearerToken(lastFront.Url(), "t-last");
  EXPECT_EQ(FetchFrom(plain_.Url(), Doc()).body, "last");
  EXPECT_EQ(last.requests().at(0).Header("Authorization"), "(none)");
  EXPECT_EQ(last.requests().at(0).Header("X-Nonce"), "(none)");
}

}  // namespace
