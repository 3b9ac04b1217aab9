#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/platform/certificate_maker.h"
#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/raw_server.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using du::http::ErrorCode;
using du::http::FailureDetail;
using testing::ElementsAre;
using vtdirect_test::CertificateOrder;
using vtdirect_test::DayText;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;
using vtdirect_test::MakeCertificate;
using vtdirect_test::Peer;
using vtdirect_test::RawServer;
using vtdirect_test::ScriptedServer;
using vtdirect_test::TlsDemand;
using vtdirect_test::TlsFront;
using vtdirect_test::WireRequest;

/// What the platform explains a handshake by that failed. The server is "server".
class TlsDetails : public testing::Test {
 protected:
  TlsDetails() {
    vtdirect_test::UseShortLimits();
    TrustFile(MakeCertificate(Directory(), {"authority", ""}));
  }
  [[nodiscard]] const std::string& Directory() const { return directory_.path(); }
  static void TrustFile(const std::string& file) { vtdirect_test::Trust(file); }

  void Expect(const std::string& url, ErrorCode code, FailureDetail detail, const std::string& sentence) {
    traces_.Clear();
    const Fetched fetched = FetchFrom(url);
    EXPECT_EQ(fetched.code, code);
    EXPECT_EQ(fetched.found.detail, detail) << fetched.found.text;
    EXPECT_EQ(fetched.found.text, sentence);
    const vtdirect_test::TraceLine line{3, "Transport", url + ": " + sentence + ".\n"};
    EXPECT_THAT(traces_.lines(), ElementsAre(line));
  }
  void ExpectOfServer(FailureDetail detail, const std::string& sentence, int highestVersion = 0) {
    const TlsFront front(Directory(), "server", server_.port(), TlsDemand{"", highestVersion});
    Expect(front.Url(), ErrorCode::TlsFailure, detail, sentence);
  }
  void MakeServer(CertificateOrder order) {
    order.name = "server";
    order.authority = "authority";
    MakeCertificate(Directory(), order);
  }

  vtdirect_test::TemporaryDirectory directory_;
  vtdirect_test::TraceRecorder traces_;
  ScriptedServer server_{[](Peer& peer, WireRequest&) { peer.Answer(200, "said"); }};
};

TEST_F(TlsDetails, AreNotNeededByAServerOfAnOwnAuthority) {
  MakeServer({});
  const TlsFront front(Directory(), "server", server_.port());
  const Fetched fetched = FetchFrom(front.Url());
  EXPECT_EQ(fetched.body, "said");
  EXPECT_EQ(fetched.explanations, 0);
}

TEST_F(TlsDetails, TellWhenACertificateExpired) {
  MakeServer({"", "IP:127.0.0.1", -30, -3});
  ExpectOfServer(FailureDetail::CertificateExpired, "The server's certificate expired on " + DayText(-3));
}

TEST_F(TlsDetails, TellFromWhenACertificateIsValid) {
  MakeServer({"", "IP:127.0.0.1", 3, 30});
  ExpectOfServer(FailureDetail::CertificateNotYetValid,
                 "The server's certificate is not valid yet, but from " + DayText(3) + " on");
}

TEST_F(TlsDetails, TellThatTheCertificateOfTheAuthorityExpired) {
  TrustFile(MakeCertificate(Directory(), {"authority", "", -30, -3}));
  MakeServer({});
  ExpectOfServer(FailureDetail::CertificateExpired,
                 "The server's certificate expired on " + DayText(-3) + " (that of its authority)");
}

TEST_F(TlsDetails, TellForWhomACertificateIs) {
  MakeServer({"", "DNS:vantry.example,IP:127.0.0.2,DNS:*.vantry.example,DNS:more.example"});
  ExpectOfServer(FailureDetail::CertificateOfOtherHost,
                 "The server's certificate is for vantry.example, 127.0.0.2, *.vantry.example, ..., "
                 "and not for 127.0.0.1");
}

TEST_F(TlsDetails, TellWhoSignedACertificate) {
  MakeCertificate(Directory(), {"server"});
  ExpectOfServer(FailureDetail::CertificateSelfSigned,
                 "The server's certificate is signed by itself, and is not trusted here");
  MakeCertificate(Directory(), {"stranger", ""});
  MakeCertificate(Directory(), {"server", "IP:127.0.0.1", -1, 2, "stranger"});
  ExpectOfServer(FailureDetail::AuthorityUnknown,
                 "The server's certificate comes from an authority that is not trusted here");
}

TEST_F(TlsDetails, TellWhatIsWrongWithTheFileOfTrustedCertificates) {
  MakeServer({});
  const std::string file = directory_.File("trusted.pem");
  TrustFile(file);
  ExpectOfServer(FailureDetail::AuthorityFileUnreadable,
                 "The file of trusted certificates can't be read: " + file);
  vtdirect_test::WriteFile(file, "");
  ExpectOfServer(FailureDetail::AuthorityFileEmpty,
                 "The file of trusted certificates holds no certificate: " + file);
  vtdirect_test::WriteFile(file, "-----BEGIN CERTIFICATE-----\nbroken\n-----END CERTIFICATE-----\n");
  ExpectOfServer(FailureDetail::AuthorityFileBroken,
                 "The file of trusted certificates holds a broken certificate: " + file);
}

TEST_F(TlsDetails, TellThatTlsIsTooOld) {
  MakeServer({});
  ExpectOfServer(FailureDetail::TlsTooOld, "The server speaks no version of TLS from 1.2 on", TLS1_1_VERSION);
}

TEST_F(TlsDetails, TellThatAServerSpeaksPlainHttp) {
  const RawServer plain("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n");
  Expect(
      "https://" + plain.Authority(), ErrorCode::TlsFailure, FailureDetail::WantsHttp,
      "The server does not speak TLS on port " + std::to_string(plain.port()) + ", and was asked by https");
}

TEST_F(TlsDetails, TellThatAServerClosesInTheHandshake) {
  const RawServer server("");
  Expect("https://" + server.Authority(), ErrorCode::TlsFailure, FailureDetail::TlsBrokenOff,
         "The server closed the connection during the TLS handshake");
}

TEST_F(TlsDetails, TellThatAServerIsSilentOnceItIsConnected) {
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.connectTimeoutMilliseconds = 300;
  du::http::SetTransportSettings(settings);
  // Its script waits for the end of a request, and a handshake has none.
  Expect("https://127.0.0.1:" + std::to_string(server_.port()), ErrorCode::TimedOut,
         FailureDetail::HandshakeUnanswered,
         "The server took the connection and did not answer the TLS handshake within 300 ms");
}

TEST_F(TlsDetails, TellThatAClientCertificateIsDemanded) {
  MakeServer({});
  const TlsFront front(Directory(), "server", server_.port(), TlsDemand{directory_.File("server.pem"), 0});
  Expect(front.Url(), ErrorCode::TlsFailure, FailureDetail::ClientCertificateWanted,
         "The server demands a client certificate, and none is set for it");
}

}  // namespace
