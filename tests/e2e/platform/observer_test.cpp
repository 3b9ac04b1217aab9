#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/http_observer.h"
#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/support/temporary_directory.h"

namespace {

using du::http::ErrorCode;
using du::http::Method;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using vtdirect_test::Asking;
using vtdirect_test::FetchFrom;
using vtdirect_test::Peer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::WireRequest;

/// What an observer is told of the exchanges of the default transport.
class Observer : public testing::Test {
 protected:
  Observer() {
    vtdirect_test::UseShortLimits();
    du::http::SetExchangeObserver(
        [this](const du::http::ObservedExchange& exchange) { seen_.push_back(exchange); }, 8);
  }
  ~Observer() override { du::http::SetExchangeObserver({}, 0); }

  std::vector<du::http::ObservedExchange> seen_;
};

TEST_F(Observer, SeesHeadsAndTheStartsOfBodies) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    peer.ReadBody(&request);
    peer.Answer(201, "an answer of some length");
  });
  const std::string body = "{\"name\":\"long\"}";
  Asking asking;
  asking.method = Method::Post;
  asking.uri = "/a?b=c";
  asking.headers = "Content-Type: application/json\r\nX-Nonce: n1";
  asking.body = &body;
  EXPECT_EQ(FetchFrom(server.Url(), asking).body, "an answer of some length");
  ASSERT_EQ(seen_.size(), 1U);
  const du::http::ObservedExchange& exchange = seen_[0];
  EXPECT_EQ(exchange.method, Method::Post);
  EXPECT_EQ(exchange.url, "http://127.0.0.1:" + std::to_string(server.port()) + "/a?b=c");
  EXPECT_EQ(exchange.result, ErrorCode::Done);
  EXPECT_EQ(exchange.status, 201);
  EXPECT_EQ(exchange.peer, "127.0.0.1");
  EXPECT_TRUE(exchange.newConnection);
  ASSERT_EQ(exchange.turns.size(), 1U);
  EXPECT_THAT(exchange.turns[0].requestHead, StartsWith("POST /a?b=c HTTP/1.1\r\n"));
  EXPECT_THAT(exchange.turns[0].requestHead, HasSubstr("\r\nX-Nonce: n1\r\n"));
  EXPECT_THAT(exchange.turns[0].answerHead, StartsWith("HTTP/1.1 201 "));
  EXPECT_FALSE(exchange.turns[0].answerHead.ends_with("\n"));
  EXPECT_EQ(exchange.requestBody, "{\"name\":");
  EXPECT_EQ(exchange.requestBodyBytes, 15U);
  EXPECT_EQ(exchange.answerBody, "an answe");
  EXPECT_EQ(exchange.answerBodyBytes, 24U);
  EXPECT_THAT(exchange.certificates, IsEmpty());
}

TEST_F(Observer, SeesEachTurnOfALoginThatTheTransportAnswers) {
  ScriptedServer server([](Peer& peer, WireRequest& request) {
    if (request.Header("Authorization") == "(none)")
      return peer.Answer(401, "no", "WWW-Authenticate: Basic realm=\"r\"\r\n");
    peer.Answer(200, "in");
  });
  du::http::SetPasswordCredentials(server.Url(), "anna", "pw");
  EXPECT_EQ(FetchFrom(server.Url()).status, 200);
  du::http::ClearAllCredentials();
  ASSERT_EQ(seen_.size(), 1U);
  ASSERT_EQ(seen_[0].turns.size(), 2U) << seen_[0].turns[0].requestHead << "\n"
                                       << seen_[0].turns[0].answerHead;
  EXPECT_THAT(seen_[0].turns[0].answerHead, StartsWith("HTTP/1.1 401"));
  EXPECT_THAT(seen_[0].turns[1].requestHead, HasSubstr("Authorization: Basic "));
  EXPECT_THAT(seen_[0].turns[1].answerHead, StartsWith("HTTP/1.1 200"));
}

TEST_F(Observer, SeesAnExchangeThatFails) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Reset(); });
  EXPECT_NE(FetchFrom(server.Url()).code, ErrorCode::Done);
  ASSERT_EQ(seen_.size(), 1U);
  EXPECT_NE(seen_[0].result, ErrorCode::Done);
  EXPECT_EQ(seen_[0].status, 0);
}

TEST_F(Observer, SeesNothingAnyMoreWhenItHasEnded) {
  ScriptedServer server([](Peer& peer, WireRequest&) { peer.Answer(200, "fine"); });
  const auto connection = vtdirect_test::Connect(server.Url());
  static_cast<void>(vtdirect_test::Fetch(*connection));
  du::http::SetExchangeObserver({}, 0);
  testing::internal::CaptureStderr();
  EXPECT_EQ(vtdirect_test::Fetch(*connection).body, "fine");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "")
      << "the handle that was observed says nothing by itself";
  EXPECT_EQ(seen_.size(), 1U);
}

// curl has one trace function for a handle, which guards against such a line.
TEST_F(Observer, LeavesTheGuardAgainstALineThatContinuesAStatusLineWhereItIs) {
  int asked = 0;
  ScriptedServer server([&asked](Peer& peer, WireRequest&) {
    if (++asked == 1) return peer.Answer(200, "fine");
    peer.Send("HTTP/1.1 200 OK\r\n X: y\r\nContent-Length: 0\r\n\r\n");
    peer.Close();
  });
  const auto connection = vtdirect_test::Connect(server.Url());
  EXPECT_EQ(vtdirect_test::Fetch(*connection).code, ErrorCode::Done);
  EXPECT_EQ(vtdirect_test::Fetch(*connection).code, ErrorCode::ProtocolFailure) << "while it observes";
  du::http::SetExchangeObserver({}, 0);
  EXPECT_EQ(vtdirect_test::Fetch(*connection).code, ErrorCode::ProtocolFailure) << "and afterwards";
}

TEST_F(Observer, SeesTheCertificateThatAServerShows) {
  if (!vtdirect_test::HaveOpenSsl())
    GTEST_SKIP() << "the openssl program, which plays the server, is missing";
  const vtdirect_test::TemporaryDirectory directory;
  const std::string certificate = vtdirect_test::MakeCertificate(directory.path(), "server", "IP:127.0.0.1");
  vtdirect_test::WriteFile(directory.File("doc"), "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsecure");
  vtdirect_test::TlsServer server(directory.path(), "server");
  vtdirect_test::Trust(certificate);
  Asking asking;
  asking.uri = "/doc";
  EXPECT_EQ(FetchFrom(server.Url(), asking).body, "secure");
  vtdirect_test::Trust("");
  ASSERT_EQ(seen_.size(), 1U);
  ASSERT_FALSE(seen_[0].certificates.empty());
  EXPECT_FALSE(seen_[0].certificates[0].issuer.empty());
  EXPECT_EQ(seen_[0].certificates[0].subject, seen_[0].certificates[0].issuer) << "it is signed by itself";
  EXPECT_THAT(seen_[0].certificates[0].notAfter, testing::EndsWith(" GMT"));
}

}  // namespace
