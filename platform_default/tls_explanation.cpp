#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "platform_default/failure_explanation.h"
#include "platform_default/failure_words.h"

namespace vtdirect::platform {
namespace {

using du::http::FailureReport;
using Detail = du::http::FailureDetail;

/// curl's value for a certificate that was not verified by OpenSSL's rules yet.
constexpr int notVerified = 1;

template <std::size_t Count>
bool Mentions(const std::string& text, const std::array<std::string_view, Count>& words) {
  return std::any_of(words.begin(), words.end(),
                     [&text](std::string_view word) { return text.find(word) != std::string::npos; });
}

/// OpenSSL's words for bytes that are no TLS: curl hands on no number.
constexpr std::array<std::string_view, 4> wordsForNoTls{"wrong version number", "http request",
                                                        "packet length too long", "record layer failure"};
constexpr std::array<std::string_view, 3> wordsForOldTls{"unsupported protocol", "version too low",
                                                         "alert protocol version"};
constexpr std::array<std::string_view, 4> wordsForEnd{"unexpected eof", "SSL_ERROR_SYSCALL",
                                                      "Connection reset", "unexpected end"};

/// Whose certificate it is, when it isn't the server's own.
const char* OwnerText(const CertificateFault& fault) {
  return fault.isOfAuthority ? " (that of its authority)" : "";
}

std::string EndText(const CertificateFault& fault) {
  return (fault.date.empty() ? "" : " on " + fault.date) + OwnerText(fault);
}

std::string BeginningText(const CertificateFault& fault) {
  return (fault.date.empty() ? "" : ", but from " + fault.date + " on") + OwnerText(fault);
}

/// What OpenSSL said, out of curl's "error:0A000152:SSL routines::unsafe legacy renegotiation disabled".
std::string OpenSslWords(const ExchangeEvidence& evidence) {
  const std::string& text = evidence.curlText;
  if (text.empty()) return curl_easy_strerror(evidence.result);
  const auto routines = text.rfind("::");
  return routines == std::string::npos ? text : text.substr(routines + 2);
}

FailureReport ExplainCertificate(const ExchangeEvidence& evidence) {
  CertificateFault fault = evidence.tls.fault;
  if (fault.code == 0 && evidence.verification != notVerified) fault.code = evidence.verification;
  switch (fault.code) {
    case X509_V_OK: {
      const std::string& hosts = evidence.tls.certificateHosts;
      return ReportOf(Detail::CertificateOfOtherHost,
                      {hosts.empty() ? std::string("no host") : hosts, evidence.origin.host});
    }
    case X509_V_ERR_CERT_HAS_EXPIRED:
      return ReportOf(Detail::CertificateExpired, {EndText(fault)});
    case X509_V_ERR_CERT_NOT_YET_VALID:
      return ReportOf(Detail::CertificateNotYetValid, {BeginningText(fault)});
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
      return ReportOf(Detail::CertificateSelfSigned);
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    case X509_V_ERR_CERT_UNTRUSTED:
      return ReportOf(Detail::AuthorityUnknown);
    default:
      return ReportOf(Detail::CertificateInvalid, {X509_verify_cert_error_string(fault.code)});
  }
}

FailureReport ExplainTrust(const ExchangeEvidence& evidence) {
  switch (evidence.trustFault) {
    case TrustFault::Unreadable:
      return ReportOf(Detail::AuthorityFileUnreadable, {evidence.trustFile});
    case TrustFault::Empty:
      return ReportOf(Detail::AuthorityFileEmpty, {evidence.trustFile});
    case TrustFault::None:
    case TrustFault::Broken:
      break;
  }
  return ReportOf(Detail::AuthorityFileBroken, {evidence.trustFile});
}

FailureReport ExplainHandshake(const ExchangeEvidence& evidence) {
  const int alert = evidence.tls.fatalAlert.value_or(-1);
  const bool isOld = alert == TLS1_AD_PROTOCOL_VERSION || evidence.tls.ownAlert == TLS1_AD_PROTOCOL_VERSION;
  // OpenSSL sends this alert as well to a server that speaks no TLS at all.
  if (Mentions(evidence.curlText, wordsForNoTls))
    return ReportOf(Detail::WantsHttp, {std::to_string(evidence.origin.port)});
  if (isOld || Mentions(evidence.curlText, wordsForOldTls)) return ReportOf(Detail::TlsTooOld);
  if (alert == SSL3_AD_HANDSHAKE_FAILURE || alert == TLS1_AD_INSUFFICIENT_SECURITY) {
    return ReportOf(Detail::TlsNothingInCommon);
  }
  if (alert == TLS1_AD_NO_APPLICATION_PROTOCOL) return ReportOf(Detail::HttpVersionUnknown);
  if (Mentions(evidence.curlText, wordsForEnd)) return ReportOf(Detail::TlsBrokenOff);
  return ReportOf(Detail::TlsFailed, {OpenSslWords(evidence)});
}

}  // namespace

FailureReport ExplainTls(const ExchangeEvidence& evidence) {
  switch (evidence.result) {
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
      return ExplainCertificate(evidence);
    case CURLE_SSL_CACERT_BADFILE:
      return ExplainTrust(evidence);
    default:
      return ExplainHandshake(evidence);
  }
}

}  // namespace vtdirect::platform
