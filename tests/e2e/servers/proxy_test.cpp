#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/e2e/servers/server_program.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"
#include "tests/support/unused_port.h"

namespace {

using du::http::ErrorCode;
using du::http::FailureDetail;
using testing::HasSubstr;
using testing::Not;
using vtdirect_test::Asking;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

constexpr const char* configuration = R"(
Port @PORT@
Listen 127.0.0.1
LogFile "@HOME@/tinyproxy.log"
LogLevel Info
PidFile "@HOME@/tinyproxy.pid"
MaxClients 20
Allow 127.0.0.1
ViaProxyName "between"
@LOGIN@
)";

/// tinyproxy between this process and a server, which is asked over http or over TLS in a tunnel.
class TinyProxy : public testing::Test {
 protected:
  void SetUp() override {
    vtdirect_test::UseLongLimits();
    program_ = vtdirect_test::FindProgram("tinyproxy");
    if (program_.empty()) GTEST_SKIP() << "tinyproxy is missing (Debian package tinyproxy-bin)";
    if (!vtdirect_test::HaveOpenSsl())
      GTEST_SKIP() << "the openssl program, which makes certificates, is missing";
    vtdirect_test::Trust(vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1"));
    front_.emplace(directory_.path(), "server", server_.port());
  }
  void Start(const std::string& login = "") {
    vtdirect_test::WriteFile(
        directory_.File("proxy.conf"),
        vtdirect_test::Filled(
            configuration, {{"HOME", directory_.path()}, {"PORT", std::to_string(port_)}, {"LOGIN", login}}));
    proxy_.emplace(std::vector<std::string>{program_, "-d", "-c", directory_.File("proxy.conf")}, port_,
                   directory_.File("tinyproxy.out"));
  }
  [[nodiscard]] std::string ProxyUrl() const { return "http://127.0.0.1:" + std::to_string(port_); }
  void UseProxyOfSettings() const {
    du::http::TransportSettings settings = du::http::GetTransportSettings();
    settings.proxy = ProxyUrl();
    du::http::SetTransportSettings(settings);
  }
  void UseProxyOfEnvironment() const {
    vtdirect_test::UseLongLimits();
    vtdirect_test::Trust(directory_.File("server.pem"));
    setenv("http_proxy", ProxyUrl().c_str(), 1);
    setenv("https_proxy", ProxyUrl().c_str(), 1);
  }
  Asking Post() const {
    Asking asking;
    asking.method = du::http::Method::Post;
    asking.body = &body_;
    return asking;
  }

  const std::string body_ = std::string(300'000, 'p') + "end";
  const int port_ = vtdirect_test::UnusedPort();
  vtdirect_test::TemporaryDirectory directory_;
  vtdirect_test::TraceRecorder traces_;
  std::string program_;
  ScriptedServer server_{[](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.Answer(200, "from the server");
  }};
  std::optional<vtdirect_test::TlsFront> front_;
  std::optional<vtdirect_test::ServerProgram> proxy_;
};

TEST_F(TinyProxy, PassesPlainRequestsOn) {
  Start();
  UseProxyOfSettings();
  EXPECT_EQ(FetchFrom(server_.Url()).body, "from the server");
  EXPECT_EQ(FetchFrom(server_.Url(), Post()).body, "from the server");
  EXPECT_TRUE(server_.requests().at(1).body == body_);
  EXPECT_THAT(server_.requests().at(0).Header("Via"), HasSubstr("between"));
}

TEST_F(TinyProxy, CutsNoWriteOffThatFollowsARead) {
  // It closes a connection after each answer and doesn't say so before.
  Start();
  for (const bool bySettings : {true, false}) {
    if (bySettings) UseProxyOfSettings();
    if (!bySettings) UseProxyOfEnvironment();
    for (int round = 0; round < 10; ++round) {
      EXPECT_EQ(FetchFrom(server_.Url()).body, "from the server");
      EXPECT_EQ(FetchFrom(server_.Url(), Post()).body, "from the server");
    }
  }
}

TEST_F(TinyProxy, OfTheEnvironmentDoesSoToo) {
  Start();
  UseProxyOfEnvironment();
  EXPECT_EQ(FetchFrom(server_.Url()).body, "from the server");
  EXPECT_THAT(server_.requests().at(0).Header("Via"), HasSubstr("between"));
  EXPECT_EQ(FetchFrom(front_->Url()).body, "from the server");
  EXPECT_THAT(vtdirect_test::ReadFile(directory_.File("tinyproxy.log")), HasSubstr("CONNECT"));
}

TEST_F(TinyProxy, CarriesATunnelThatIsKept) {
  Start();
  UseProxyOfSettings();
  EXPECT_EQ(FetchFrom(front_->Url()).body, "from the server");
  EXPECT_EQ(FetchFrom(front_->Url(), Post()).body, "from the server");
  EXPECT_TRUE(server_.requests().at(1).body == body_);
  EXPECT_EQ(front_->connections(), 1);
  // What goes through the tunnel is the server's alone.
  EXPECT_EQ(server_.requests().at(0).Header("Via"), "(none)");
}

TEST_F(TinyProxy, WithAPasswordLetsItsUserThrough) {
  Start("BasicAuth paula canary-password");
  UseProxyOfSettings();
  du::http::SetProxyCredentials("paula", "canary-password");
  EXPECT_EQ(FetchFrom(server_.Url()).body, "from the server");
  EXPECT_EQ(FetchFrom(server_.Url(), Post()).body, "from the server");
  EXPECT_EQ(FetchFrom(front_->Url()).body, "from the server");
  EXPECT_EQ(FetchFrom(front_->Url(), Post()).body, "from the server");
  ASSERT_EQ(server_.requests().size(), 4u);
  for (const WireRequest& request : server_.requests()) {
    EXPECT_EQ(request.Header("Proxy-Authorization"), "(none)");
    EXPECT_EQ(request.Header("Authorization"), "(none)");
  }
  for (const auto& line : traces_.lines()) EXPECT_THAT(line.text, Not(HasSubstr("canary")));
}

TEST_F(TinyProxy, WithAPasswordLetsNobodyElseThrough) {
  Start("BasicAuth paula s3cret");
  UseProxyOfSettings();
  // A refused request over http has an answer, the proxy's own; a refused tunnel leads nowhere.
  EXPECT_EQ(FetchFrom(server_.Url()).status, 407);
  EXPECT_EQ(FetchFrom(server_.Url()).found.detail, FailureDetail::ProxyWantsLogin);
  EXPECT_EQ(FetchFrom(front_->Url()).code, ErrorCode::NoConnection);
  EXPECT_EQ(FetchFrom(front_->Url()).found.detail, FailureDetail::ProxyWantsLogin);
  du::http::SetProxyCredentials("paula", "canary-wrong");
  EXPECT_EQ(FetchFrom(front_->Url()).code, ErrorCode::NoConnection);
  EXPECT_EQ(FetchFrom(front_->Url(), Post()).code, ErrorCode::NoConnection);
  EXPECT_EQ(server_.connections(), 0);
  for (const auto& line : traces_.lines()) EXPECT_THAT(line.text, Not(HasSubstr("canary")));
}

}  // namespace
