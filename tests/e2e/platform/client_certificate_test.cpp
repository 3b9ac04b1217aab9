#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/trace.h"
#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using du::http::ErrorCode;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using vtdirect_test::Asking;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::TlsFront;
using vtdirect_test::WireRequest;

/// Servers that let nobody in without the certificate "client".
class ClientCertificate : public testing::Test {
 protected:
  void SetUp() override {
    vtdirect_test::UseShortLimits();
    if (!vtdirect_test::HaveOpenSsl())
      GTEST_SKIP() << "the openssl program, which makes certificates, is missing";
    vtdirect_test::Trust(vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1"));
    certificate_ = vtdirect_test::MakeCertificate(directory_.path(), "client", "DNS:anna.example");
    key_ = directory_.File("client.key");
  }
  std::unique_ptr<TlsFront> Demanding(int highestVersion = 0) {
    return std::make_unique<TlsFront>(directory_.path(), "server", server_.port(),
                                      vtdirect_test::TlsDemand{certificate_, highestVersion});
  }
  /// Gives `passphrase` when the key is locked, and counts.
  du::http::ClientCertificate::PassphraseFunction Telling(const std::string& passphrase) {
    return [this, passphrase](const std::string&) -> std::optional<std::string> {
      ++asked_;
      return passphrase;
    };
  }
  std::vector<std::string> TracedTexts() const {
    std::vector<std::string> texts;
    for (const auto& line : traces_.lines()) texts.push_back(line.text);
    return texts;
  }

  vtdirect_test::TemporaryDirectory directory_;
  std::string certificate_;
  std::string key_;
  int asked_ = 0;
  vtdirect_test::TraceRecorder traces_;
  ScriptedServer server_{[](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.Answer(200, "let in");
  }};
};

TEST_F(ClientCertificate, IsShownToAServerThatDemandsIt) {
  for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
    const auto front = Demanding(version);
    du::http::SetClientCertificate(front->Url(), {certificate_, key_, {}});
    EXPECT_EQ(FetchFrom(front->Url()).body, "let in") << version;
  }
  EXPECT_THAT(TracedTexts(), IsEmpty());
}

TEST_F(ClientCertificate, ThatIsMissingIsATlsFailureWhoseTextSaysSo) {
  const std::string body = "small";
  for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
    for (const auto method : {du::http::Method::Get, du::http::Method::Post}) {
      const auto front = Demanding(version);
      traces_.Clear();
      Asking asking;
      asking.method = method;
      asking.body = method == du::http::Method::Get ? nullptr : &body;
      EXPECT_EQ(FetchFrom(front->Url(), asking).code, ErrorCode::TlsFailure) << version;
      EXPECT_THAT(TracedTexts(),
                  testing::ElementsAre(
                      front->Url() + ": The server demands a client certificate, and none is set for it.\n"));
    }
  }
  EXPECT_THAT(server_.requests(), IsEmpty());
}

TEST_F(ClientCertificate, ThatTheServerDoesNotKnowIsATlsFailureWhoseTextSaysSo) {
  const std::string other = vtdirect_test::MakeCertificate(directory_.path(), "other", "DNS:eve.example");
  for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
    const auto front = Demanding(version);
    traces_.Clear();
    du::http::SetClientCertificate(front->Url(), {other, directory_.File("other.key"), {}});
    EXPECT_EQ(FetchFrom(front->Url()).code, ErrorCode::TlsFailure) << version;
    EXPECT_THAT(TracedTexts(), testing::ElementsAre(HasSubstr("refuses the client certificate " + other)));
  }
}

TEST_F(ClientCertificate, MayHaveItsKeyInTheSameFile) {
  const std::string both = directory_.File("both.pem");
  vtdirect_test::WriteFile(both, vtdirect_test::ReadFile(certificate_) + vtdirect_test::ReadFile(key_));
  const auto front = Demanding();
  du::http::SetClientCertificate(front->Url(), {both, "", {}});
  EXPECT_EQ(FetchFrom(front->Url()).body, "let in");
}

TEST_F(ClientCertificate, WithALockedKeyAsksForThePassphraseOnce) {
  const std::string locked = vtdirect_test::MakeLockedKey(directory_.path(), "client", "canary phrase");
  const auto front = Demanding();
  du::http::SetClientCertificate(front->Url(), {certificate_, locked, Telling("canary phrase")});
  EXPECT_EQ(asked_, 0);
  EXPECT_EQ(FetchFrom(front->Url()).body, "let in");
  du::http::SetBearerToken(front->Url(), "another session, another connection");
  EXPECT_EQ(FetchFrom(front->Url()).body, "let in");
  EXPECT_EQ(front->connections(), 2);
  EXPECT_EQ(asked_, 1);
}

TEST_F(ClientCertificate, AsksAnewAfterAPassphraseThatDoesNotFit) {
  const std::string locked = vtdirect_test::MakeLockedKey(directory_.path(), "client", "canary phrase");
  const auto front = Demanding();
  du::http::SetClientCertificate(
      front->Url(), {certificate_, locked, [this](const std::string& file) {
                       EXPECT_THAT(file, HasSubstr("client.locked.key"));
                       return std::optional<std::string>(++asked_ == 1 ? "canary mistyped" : "canary phrase");
                     }});
  EXPECT_EQ(FetchFrom(front->Url()).code, ErrorCode::TlsFailure);
  EXPECT_THAT(TracedTexts(), testing::ElementsAre(HasSubstr("can't be read")));
  EXPECT_EQ(FetchFrom(front->Url()).body, "let in");
  EXPECT_EQ(asked_, 2);
  for (const std::string& text : TracedTexts()) EXPECT_THAT(text, Not(HasSubstr("canary")));
}

TEST_F(ClientCertificate, WithALockedKeyAndNoPassphraseConnectsToNobody) {
  const std::string locked = vtdirect_test::MakeLockedKey(directory_.path(), "client", "canary phrase");
  const auto front = Demanding();
  du::http::SetClientCertificate(front->Url(), {certificate_, locked, {}});
  EXPECT_EQ(FetchFrom(front->Url()).code, ErrorCode::TlsFailure);
  du::http::SetClientCertificate(
      front->Url(), {certificate_, locked, [](const std::string&) { return std::optional<std::string>(); }});
  EXPECT_EQ(FetchFrom(front->Url()).code, ErrorCode::TlsFailure);
  EXPECT_EQ(front->connections(), 0);
  EXPECT_THAT(TracedTexts(), testing::Each(HasSubstr("locked, and no passphrase was given")));
}

TEST_F(ClientCertificate, MayComeAsPkcs12) {
  const auto front = Demanding();
  const std::string locked = vtdirect_test::MakePkcs12(directory_.path(), "client", "canary phrase");
  du::http::SetClientCertificate(front->Url(), {locked, "", Telling("canary phrase")});
  EXPECT_EQ(FetchFrom(front->Url()).body, "let in");
  EXPECT_EQ(asked_, 1);
}

TEST_F(ClientCertificate, AsPkcs12WithoutAPassphraseAsksNobody) {
  const auto front = Demanding();
  const std::string open = vtdirect_test::MakePkcs12(directory_.path(), "client", "");
  du::http::SetClientCertificate(front->Url(), {open, "", Telling("canary phrase")});
  EXPECT_EQ(FetchFrom(front->Url()).body, "let in");
  EXPECT_EQ(asked_, 0);
}

TEST_F(ClientCertificate, ThatCannotBeReadIsATlsFailure) {
  const auto front = Demanding();
  du::http::SetClientCertificate(front->Url(), {directory_.File("missing.pem"), "", {}});
  EXPECT_EQ(FetchFrom(front->Url()).code, ErrorCode::TlsFailure);
  EXPECT_THAT(TracedTexts(), testing::ElementsAre(HasSubstr("missing.pem")));
}

TEST_F(ClientCertificate, OfAnOriginGoesBeforeTheOneForAll) {
  const std::string other = vtdirect_test::MakeCertificate(directory_.path(), "other", "DNS:eve.example");
  const auto front = Demanding();
  du::http::SetClientCertificateForAll({certificate_, key_, {}});
  EXPECT_EQ(FetchFrom(front->Url()).body, "let in");
  du::http::SetClientCertificate(front->Url() + "/any/path", {other, directory_.File("other.key"), {}});
  EXPECT_EQ(FetchFrom(front->Url()).code, ErrorCode::TlsFailure);
  du::http::ClearClientCertificate(front->Url());
  EXPECT_EQ(FetchFrom(front->Url()).body, "let in");
}

TEST_F(ClientCertificate, ThatIsClearedIsOfNoUseOnAKeptConnectionEither) {
  for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
    const auto front = Demanding(version);
    const auto connection = vtdirect_test::Connect(front->Url());
    du::http::SetClientCertificateForAll({certificate_, key_, {}});
    EXPECT_EQ(vtdirect_test::Fetch(*connection).body, "let in");
    du::http::ClearAllClientCertificates();
    EXPECT_EQ(vtdirect_test::Fetch(*connection).code, ErrorCode::TlsFailure);
  }
}

TEST_F(ClientCertificate, IsNotShownWhereARedirectLeads) {
  const auto front = Demanding();
  ScriptedServer leading(
      [&front](Peer& peer, WireRequest&) { peer.Answer(302, "", "Location: " + front->Url() + "/\r\n"); });
  const TlsFront leadingFront(directory_.path(), "server", leading.port());
  du::http::SetClientCertificateForAll({certificate_, key_, {}});
  du::http::SetClientCertificate(front->Url(), {certificate_, key_, {}});
  EXPECT_EQ(FetchFrom(leadingFront.Url()).code, ErrorCode::TlsFailure);
  EXPECT_EQ(FetchFrom(front->Url()).body, "let in");
}

TEST_F(ClientCertificate, IsShownAfterARedirectFromHttpToHttpsOnTheSameHost) {
  const auto front = Demanding();
  ScriptedServer plain(
      [&front](Peer& peer, WireRequest&) { peer.Answer(302, "", "Location: " + front->Url() + "/\r\n"); });
  du::http::SetClientCertificate(front->Url(), {certificate_, key_, {}});
  EXPECT_EQ(FetchFrom(plain.Url()).body, "let in");
}

TEST_F(ClientCertificate, LetsAnExceptionOfThePassphraseFunctionThrough) {
  const std::string locked = vtdirect_test::MakeLockedKey(directory_.path(), "client", "canary phrase");
  const auto front = Demanding();
  du::http::SetClientCertificate(front->Url(),
                                 {certificate_, locked, [](const std::string&) -> std::optional<std::string> {
                                    throw std::bad_function_call();
                                  }});
  EXPECT_THROW(FetchFrom(front->Url()), std::bad_function_call);
}

}  // namespace
