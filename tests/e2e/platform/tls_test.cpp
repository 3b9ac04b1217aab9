#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/support/temporary_directory.h"

namespace {

using du::http::ErrorCode;
using vtdirect_test::Asking;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::TlsServer;
using vtdirect_test::WireRequest;

class Tls : public testing::Test {
 protected:
  void SetUp() override {
    vtdirect_test::UseShortLimits();
    if (!vtdirect_test::HaveOpenSsl())
      GTEST_SKIP() << "the openssl program, which plays the server, is missing";
  }
  static void Trust(const std::string& file) {
    du::http::TransportSettings settings = du::http::GetTransportSettings();
    settings.certificateAuthorityFile = file;
    du::http::SetTransportSettings(settings);
  }
  static Asking For(const std::string& uri) {
    Asking asking;
    asking.uri = uri;
    return asking;
  }
  vtdirect_test::TemporaryDirectory directory_;
};

TEST_F(Tls, SpeaksToATrustedServerOnly) {
  const std::string certificate = vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1");
  vtdirect_test::WriteFile(directory_.File("doc"), "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsecure");
  TlsServer server(directory_.path(), "server");

  EXPECT_EQ(FetchFrom(server.Url(), For("/doc")).code, ErrorCode::TlsFailure);
  Trust(certificate);
  const Fetched fetched = FetchFrom(server.Url(), For("/doc"));
  EXPECT_EQ(fetched.code, ErrorCode::Done);
  EXPECT_EQ(fetched.body, "secure");
  Trust("");
  EXPECT_EQ(FetchFrom(server.Url(), For("/doc")).code, ErrorCode::TlsFailure);
}

TEST_F(Tls, DropsTrustOnAStandingConnection) {
  const std::string certificate = vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1");
  vtdirect_test::WriteFile(directory_.File("doc"), "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsecure");
  TlsServer server(directory_.path(), "server");
  const auto connection = vtdirect_test::Connect(server.Url());
  Trust(certificate);
  EXPECT_EQ(vtdirect_test::Fetch(*connection, For("/doc")).body, "secure");
  Trust("");
  // This server takes one connection at a time, so a fresh handshake may run into the limit before it can
  // fail.
  EXPECT_NE(vtdirect_test::Fetch(*connection, For("/doc")).code, ErrorCode::Done);
}

TEST_F(Tls, RefusesACertificateOfAnotherHost) {
  Trust(vtdirect_test::MakeCertificate(directory_.path(), "server", "DNS:vantry.example"));
  TlsServer server(directory_.path(), "server");
  EXPECT_EQ(FetchFrom(server.Url()).code, ErrorCode::TlsFailure);
}

TEST_F(Tls, FailsWithAnAuthorityFileThatIsMissing) {
  vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1");
  TlsServer server(directory_.path(), "server");
  Trust(directory_.File("missing.pem"));
  EXPECT_EQ(FetchFrom(server.Url()).code, ErrorCode::TlsFailure);
}

TEST_F(Tls, FailsWhereTheServerSpeaksPlainly) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, ""); });
  // The handshake is no request that the script would see; the server just closes on it.
  const Fetched fetched = FetchFrom("https://127.0.0.1:" + std::to_string(server.port()));
  EXPECT_TRUE(fetched.code == ErrorCode::TlsFailure || fetched.code == ErrorCode::TimedOut);
  EXPECT_EQ(fetched.status, -77);
}

TEST_F(Tls, IsNeverLeftByARedirect) {
  ScriptedServer plain([](Peer& peer, WireRequest&) { peer.Answer(200, "in clear"); });
  Trust(vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1"));
  vtdirect_test::WriteFile(directory_.File("start"), "HTTP/1.1 302 Found\r\nContent-Length: 4\r\nLocation: " +
                                                         plain.Url() + "/\r\n\r\nmove");
  TlsServer server(directory_.path(), "server");
  const Fetched fetched = FetchFrom(server.Url(), For("/start"));
  EXPECT_EQ(fetched.code, ErrorCode::Done);
  EXPECT_EQ(fetched.status, 302);
  EXPECT_EQ(fetched.body, "move");
  EXPECT_EQ(plain.connections(), 0);
}

TEST_F(Tls, MayBeEnteredByARedirectWithoutCredentials) {
  Trust(vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1"));
  vtdirect_test::WriteFile(directory_.File("doc"), "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsecure");
  TlsServer server(directory_.path(), "server");
  ScriptedServer plain([&server](Peer& peer, WireRequest&) {
    peer.Answer(301, "", "Location: " + server.Url() + "/doc\r\n");
  });
  EXPECT_EQ(FetchFrom(plain.Url()).body, "secure");
}

TEST_F(Tls, ReportsACutBodyAsAFailure) {
  Trust(vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1"));
  vtdirect_test::WriteFile(directory_.File("doc"), "HTTP/1.1 200 OK\r\nContent-Length: 60\r\n\r\nsecure");
  TlsServer server(directory_.path(), "server");
  EXPECT_EQ(FetchFrom(server.Url(), For("/doc")).code, ErrorCode::ProtocolFailure);
}

TEST_F(Tls, SurvivesAServerThatDiesUnderAnUpload) {
  // A write on a dead TLS connection must end the exchange and not the process (SIGPIPE).
  Trust(vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1"));
  auto server = std::make_unique<TlsServer>(directory_.path(), "server");
  const std::string content(200'000'000, 'u');
  du::http::BufferFileSource inner(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
  du::http::ProgressSource body(inner, [&server](std::size_t done, std::size_t) {
    if (done > 1'000'000) server.reset();
    return true;
  });
  du::http::BufferFileSource headers(nullptr, 0);
  const auto connection = vtdirect_test::Connect(server->Url());
  const du::http::Request request{du::http::Method::Post, "/doc", &headers, &body, nullptr, nullptr};
  int status = -77;
  EXPECT_EQ(du::http::DoRequestWithCommonAuth(*connection, {nullptr, {}}, request, &status),
            ErrorCode::ProtocolFailure);
  EXPECT_EQ(status, -77);
}

}  // namespace
