#include <gtest/gtest.h>
#include <openssl/ssl.h>

#include <filesystem>
#include <memory>

#include "platform_default/certificate_store.h"
#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/support/temporary_directory.h"

namespace {

using du::http::ErrorCode;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::TlsFront;
using vtdirect_test::WireRequest;

struct ContextFreer {
  void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
using Context = std::unique_ptr<SSL_CTX, ContextFreer>;

class Certificates : public testing::Test {
 protected:
  void SetUp() override {
    vtdirect_test::UseShortLimits();
    if (!vtdirect_test::HaveOpenSsl())
      GTEST_SKIP() << "the openssl program, which makes certificates, is missing";
    certificate_ = vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1");
  }
  static void Trust(const std::string& file) {
    du::http::TransportSettings settings = du::http::GetTransportSettings();
    settings.certificateAuthorityFile = file;
    du::http::SetTransportSettings(settings);
  }
  /// A connection's TLS context, after it was given the certificates of a file; null when that failed.
  static Context ContextWith(const std::string& file) {
    Context context(SSL_CTX_new(TLS_client_method()));
    vtdirect::platform::TrustSource source{file, ""};
    const CURLcode result = vtdirect::platform::GiveCertificates(context.get(), source);
    EXPECT_TRUE(result == CURLE_OK || result == CURLE_SSL_CACERT_BADFILE) << result;
    return result == CURLE_OK ? std::move(context) : nullptr;
  }
  vtdirect_test::TemporaryDirectory directory_;
  std::string certificate_;
};

TEST_F(Certificates, AreReadOnceForAllConnections) {
  ASSERT_TRUE(vtdirect::platform::CanShareCertificates());
  const Context first = ContextWith(certificate_);
  const Context second = ContextWith(certificate_);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(SSL_CTX_get_cert_store(first.get()), SSL_CTX_get_cert_store(second.get()));
  EXPECT_EQ(sk_X509_OBJECT_num(X509_STORE_get0_objects(SSL_CTX_get_cert_store(first.get()))), 1);
}

TEST_F(Certificates, AreReadAgainWhenTheirFileHasChanged) {
  const Context first = ContextWith(certificate_);
  const std::string text = vtdirect_test::ReadFile(certificate_);
  vtdirect_test::WriteFile(certificate_, text + vtdirect_test::ReadFile(vtdirect_test::MakeCertificate(
                                                    directory_.path(), "another", "DNS:vantry.example")));
  const Context second = ContextWith(certificate_);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(sk_X509_OBJECT_num(X509_STORE_get0_objects(SSL_CTX_get_cert_store(second.get()))), 2);
}

TEST_F(Certificates, OfAFileWithoutAnyEndTheHandshake) {
  const std::string empty = directory_.File("empty.pem");
  vtdirect_test::WriteFile(empty, "");
  const std::string garbage = directory_.File("garbage.pem");
  vtdirect_test::WriteFile(garbage, "no certificate at all\n");
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "secure"); });
  const TlsFront front(directory_.path(), "server", server.port());
  for (const std::string& file : {empty, garbage, directory_.File("missing.pem"), directory_.path()}) {
    EXPECT_EQ(ContextWith(file), nullptr) << file;
    Trust(file);
    EXPECT_EQ(FetchFrom(front.Url()).code, ErrorCode::TlsFailure) << file;
  }
  // A failure isn't remembered: the file may be there the next time.
  std::filesystem::copy_file(certificate_, directory_.File("missing.pem"));
  Trust(directory_.File("missing.pem"));
  EXPECT_EQ(FetchFrom(front.Url()).body, "secure");
}

TEST_F(Certificates, ThatAreTrustedNoLongerEndKeptConnectionsAndTlsSessions) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "secure"); });
  const TlsFront front(directory_.path(), "server", server.port());
  const auto connection = vtdirect_test::Connect(front.Url());
  Trust(certificate_);
  EXPECT_EQ(vtdirect_test::Fetch(*connection).body, "secure");
  EXPECT_EQ(vtdirect_test::Fetch(*connection).body, "secure");
  EXPECT_EQ(front.handshakes(), 1);
  Trust("");
  EXPECT_EQ(vtdirect_test::Fetch(*connection).code, ErrorCode::TlsFailure);
  Trust(certificate_);
  EXPECT_EQ(vtdirect_test::Fetch(*connection).body, "secure");
  EXPECT_EQ(front.handshakes(), 2);
  EXPECT_EQ(front.resumed(), 0);
}

}  // namespace
