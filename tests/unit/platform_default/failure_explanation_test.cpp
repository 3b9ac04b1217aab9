#include "platform_default/failure_explanation.h"

#include <gtest/gtest.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

#include <cerrno>

// What no server of a test can be made to do; the rest is tried against servers.
namespace {

using du::http::ErrorCode;
using du::http::FailureDetail;
using vtdirect::platform::ExchangeEvidence;
using vtdirect::platform::ExplainFailure;

ExchangeEvidence Evidence(ErrorCode code, CURLcode result) {
  ExchangeEvidence evidence;
  evidence.origin = {"https", "plm.example", 8443};
  evidence.code = code;
  evidence.result = result;
  return evidence;
}

ExchangeEvidence Handshake(const std::string& curlText) {
  ExchangeEvidence evidence = Evidence(ErrorCode::TlsFailure, CURLE_SSL_CONNECT_ERROR);
  evidence.curlText = curlText;
  return evidence;
}

TEST(FailureExplanation, OfANameServerThatIsSilent) {
  ExchangeEvidence evidence = Evidence(ErrorCode::TimedOut, CURLE_OPERATION_TIMEDOUT);
  evidence.connectLimitMilliseconds = 30'000;
  const auto report = ExplainFailure(evidence);
  EXPECT_EQ(report.detail, FailureDetail::NameUnanswered);
  EXPECT_EQ(report.text, "No name server told the address of plm.example within 30 s");
}

TEST(FailureExplanation, OfAMachineThatNoWayLeadsTo) {
  ExchangeEvidence evidence = Evidence(ErrorCode::NoConnection, CURLE_COULDNT_CONNECT);
  evidence.systemError = EHOSTUNREACH;
  evidence.curlText = "Failed to connect to plm.example port 8443 after 3 ms: Couldn't connect to server";
  EXPECT_EQ(ExplainFailure(evidence).text, "No way leads to plm.example: No route to host");
  evidence.origin.host = "[::1]";
  evidence.curlText = "Failed to connect to ::1 port 8443 after 3 ms: Couldn't connect to server";
  EXPECT_EQ(ExplainFailure(evidence).detail, FailureDetail::RouteDead);
}

TEST(FailureExplanation, OfAlertsInAHandshake) {
  ExchangeEvidence evidence =
      Handshake("OpenSSL/3.0.19: error:0A000410:SSL routines::sslv3 alert handshake failure");
  evidence.tls.fatalAlert = SSL_AD_HANDSHAKE_FAILURE;
  EXPECT_EQ(ExplainFailure(evidence).detail, FailureDetail::TlsNothingInCommon);
  evidence.tls.fatalAlert = SSL_AD_NO_APPLICATION_PROTOCOL;
  EXPECT_EQ(ExplainFailure(evidence).detail, FailureDetail::HttpVersionUnknown);
  evidence.tls.fatalAlert = SSL_AD_PROTOCOL_VERSION;
  EXPECT_EQ(ExplainFailure(evidence).detail, FailureDetail::TlsTooOld);
  evidence.tls.fatalAlert.reset();
  evidence.tls.ownAlert = SSL_AD_PROTOCOL_VERSION;
  EXPECT_EQ(ExplainFailure(evidence).detail, FailureDetail::TlsTooOld);
}

TEST(FailureExplanation, OfAnyOtherHandshakeIsWhatOpenSslSays) {
  const auto report =
      ExplainFailure(Handshake("error:0A000152:SSL routines::unsafe legacy renegotiation disabled"));
  EXPECT_EQ(report.detail, FailureDetail::TlsFailed);
  EXPECT_EQ(report.text, "The TLS handshake failed: unsafe legacy renegotiation disabled");
}

TEST(FailureExplanation, OfACertificateByWhatCurlKnowsWhenNobodyWatched) {
  ExchangeEvidence evidence = Evidence(ErrorCode::TlsFailure, CURLE_PEER_FAILED_VERIFICATION);
  evidence.verification = X509_V_ERR_CERT_HAS_EXPIRED;
  EXPECT_EQ(ExplainFailure(evidence).text, "The server's certificate expired");
  evidence.verification = X509_V_ERR_EE_KEY_TOO_SMALL;
  EXPECT_EQ(ExplainFailure(evidence).detail, FailureDetail::CertificateInvalid);
  // curl has not got beyond the name of the host.
  evidence.verification = X509_V_ERR_UNSPECIFIED;
  EXPECT_EQ(ExplainFailure(evidence).text,
            "The server's certificate is for no host, and not for plm.example");
}

TEST(FailureExplanation, OfWhatAHostOrItsFilesEndedIsNone) {
  for (const ErrorCode code : {ErrorCode::Cancelled, ErrorCode::LocalFileFailure, ErrorCode::TooLarge}) {
    EXPECT_EQ(ExplainFailure(Evidence(code, CURLE_ABORTED_BY_CALLBACK)).detail, FailureDetail::Unknown);
  }
}

}  // namespace
