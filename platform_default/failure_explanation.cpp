#include "platform_default/failure_explanation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>

#include "platform_default/failure_words.h"

namespace vtdirect::platform {
namespace {

using du::http::ErrorCode;
using du::http::FailureReport;
using Detail = du::http::FailureDetail;

/// The ways to log in that this transport knows (request_flow.cpp).
constexpr long knownLogins = CURLAUTH_BASIC | CURLAUTH_DIGEST | CURLAUTH_NEGOTIATE | CURLAUTH_BEARER;

/// How servers say that they were asked without TLS where they speak it: nginx, Apache, Tomcat and Go's.
constexpr std::array<std::string_view, 4> wordsForHttps{"HTTP request was sent to HTTPS port",
                                                        "speaking plain HTTP to an SSL-enabled server port",
                                                        "requires TLS", "HTTP request to an HTTPS server"};

std::string PortOf(const ExchangeEvidence& evidence) {
  return std::to_string(evidence.origin.port);
}

/// What the system says to a number: "Network is unreachable".
std::string SystemText(long error) {
  return std::generic_category().message(static_cast<int>(error));
}

FailureReport HttpStatusReport(Detail detail, int status) {
  return ReportOf(detail, {std::to_string(status)});
}

/// How nginx says that it got no client certificate.
constexpr std::string_view wordsForCertificate = "No required SSL certificate was sent";

FailureReport ExplainBadRequest(const ExchangeEvidence& evidence) {
  const std::string_view start = evidence.notes.start();
  const auto says = [start](std::string_view words) { return start.find(words) != std::string_view::npos; };
  if (evidence.origin.scheme == "https") {
    return says(wordsForCertificate) ? ReportOf(Detail::ClientCertificateWanted) : FailureReport{};
  }
  const bool asksForHttps = std::any_of(wordsForHttps.begin(), wordsForHttps.end(), says);
  return asksForHttps ? ReportOf(Detail::WantsHttps, {PortOf(evidence)}) : FailureReport{};
}

FailureReport ExplainLogin(const ExchangeEvidence& evidence) {
  const auto& schemes = evidence.notes.loginSchemes();
  if (schemes.empty() || (evidence.offeredLogins & knownLogins) != 0) return {};
  std::string names;
  for (const std::string& scheme : schemes) names += (names.empty() ? "" : ", ") + scheme;
  return ReportOf(Detail::LoginUnknown, {names});
}

FailureReport ExplainCoding(const AnswerNotes& notes) {
  const std::string& coding = notes.unknownCoding();
  return coding.empty() ? FailureReport{} : ReportOf(Detail::CodingUnknown, {coding});
}

FailureReport ExplainAnswer(const ExchangeEvidence& evidence) {
  switch (evidence.status) {
    case 400:
      return ExplainBadRequest(evidence);
    case 401:
      return ExplainLogin(evidence);
    case 407:
      return ReportOf(Detail::ProxyWantsLogin);
    case 426:
    case 505:
      return ReportOf(Detail::HttpVersionUnknown);
    case 502:
    case 504:
      return HttpStatusReport(Detail::GatewayFailed, evidence.status);
    default:
      break;
  }
  return evidence.status < 300 ? ExplainCoding(evidence.notes) : FailureReport{};
}

/// Of a limit that ran out once the connection was there.
FailureReport ExplainWaiting(const TransferClock::Wait& wait) {
  const std::string limit = LimitText(wait.seconds * 1000);
  switch (wait.stage) {
    case TransferClock::Stage::Body:
      return ReportOf(Detail::BodyStalled, {limit});
    case TransferClock::Stage::Answer:
      return ReportOf(Detail::AnswerStalled, {limit});
    case TransferClock::Stage::FirstByte:
      break;
  }
  return ReportOf(Detail::AnswerUnanswered, {limit});
}

/// Of the limit on connecting.
FailureReport ExplainConnectLimit(const ExchangeEvidence& evidence) {
  const std::string limit = LimitText(evidence.connectLimitMilliseconds);
  if (!evidence.hasAddress) return ReportOf(Detail::NameUnanswered, {evidence.origin.host, limit});
  if (!evidence.hasConnected) {
    return ReportOf(Detail::ConnectUnanswered, {evidence.origin.host, PortOf(evidence), limit});
  }
  if (evidence.waitsForTunnel) return ReportOf(Detail::ProxyUnanswered, {limit});
  return ReportOf(Detail::HandshakeUnanswered, {limit});
}

/// What curl says that it tried to connect to, "host port 80", if that is not the server: then it is a proxy,
/// which may have been named by the environment.
std::string ProxyTried(const ExchangeEvidence& evidence) {
  constexpr std::string_view beginning = "Failed to connect to ";
  std::string_view text = evidence.curlText;
  if (!text.starts_with(beginning)) return {};
  text.remove_prefix(beginning.size());
  std::string_view host = evidence.origin.host;
  if (host.starts_with('[')) host = host.substr(1, host.size() - 2);
  const std::string_view tried = text.substr(0, text.find(" after "));
  const std::string server = std::string(host) + " port " + PortOf(evidence);
  return tried == server ? std::string() : std::string(tried);
}

FailureReport ExplainConnecting(const ExchangeEvidence& evidence) {
  const std::string proxy = ProxyTried(evidence);
  if (!proxy.empty()) {
    return ReportOf(Detail::ProxyUnreachable, {proxy + ": " + SystemText(evidence.systemError)});
  }
  switch (evidence.systemError) {
    case ECONNREFUSED:
      return ReportOf(Detail::PortRefused, {evidence.origin.host, PortOf(evidence)});
    case ENETUNREACH:
    case EHOSTUNREACH:
    case ENETDOWN:
    case EHOSTDOWN:
    case ETIMEDOUT:
    case EACCES:
    case EADDRNOTAVAIL:
      return ReportOf(Detail::RouteDead, {evidence.origin.host, SystemText(evidence.systemError)});
    default:
      return {};
  }
}

/// The name in curl's "Could not resolve proxy: name".
std::string NameOfProxy(const std::string& curlText) {
  const auto colon = curlText.find(": ");
  return colon == std::string::npos ? std::string() : curlText.substr(colon + 2);
}

FailureReport ExplainTunnel(int status) {
  if (status == 407) return ReportOf(Detail::ProxyWantsLogin);
  return HttpStatusReport(status >= 500 ? Detail::GatewayFailed : Detail::ProxyRefuses, status);
}

/// Whether bytes are the start of a TLS record with an alert: the answer of a TLS server to what is no TLS.
bool IsTlsAlert(std::string_view bytes) {
  return bytes.size() >= 2 && bytes[0] == '\x15' && bytes[1] == '\x03';
}

/// Of an exchange over a connection that was there, without a whole answer.
FailureReport ExplainBrokenAnswer(const ExchangeEvidence& evidence) {
  const std::string& start = evidence.notes.start();
  if (evidence.status == 0 && IsTlsAlert(start)) return ReportOf(Detail::WantsHttps, {PortOf(evidence)});
  const bool isNoHttp = !start.empty() || evidence.result == CURLE_WEIRD_SERVER_REPLY;
  if (evidence.status == 0 && isNoHttp) {
    return ReportOf(Detail::NoHttp, {PortOf(evidence), evidence.origin.host});
  }
  if (evidence.isUnclear) return ReportOf(Detail::AnswerUnclear);
  if (!evidence.notes.unknownCoding().empty()) return ExplainCoding(evidence.notes);
  if (evidence.isCodedContent) return ReportOf(Detail::ContentCoded);
  // curl gives a broken chunk the code of a broken connection.
  const bool hasBrokenChunk = evidence.curlText.find("in chunked-encoding") != std::string::npos;
  if (evidence.result == CURLE_RECV_ERROR && hasBrokenChunk) return ReportOf(Detail::AnswerUnclear);
  switch (evidence.result) {
    case CURLE_UNSUPPORTED_PROTOCOL:
      return ReportOf(Detail::HttpVersionUnknown);
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_PARTIAL_FILE:
    case CURLE_OK:
      return ReportOf(evidence.status == 0 ? Detail::ClosedUnanswered : Detail::AnswerCut);
    default:
      return {};
  }
}

FailureReport ExplainConnection(const ExchangeEvidence& evidence) {
  switch (evidence.result) {
    case CURLE_COULDNT_RESOLVE_HOST:
      return ReportOf(Detail::NameUnknown, {evidence.origin.host});
    case CURLE_COULDNT_RESOLVE_PROXY:
      return ReportOf(Detail::ProxyNameUnknown, {NameOfProxy(evidence.curlText)});
    case CURLE_COULDNT_CONNECT:
      return ExplainConnecting(evidence);
    default:
      return evidence.tunnelStatus >= 300 ? ExplainTunnel(evidence.tunnelStatus) : FailureReport{};
  }
}

}  // namespace

FailureReport ExplainFailure(const ExchangeEvidence& evidence) {
  switch (evidence.code) {
    case ErrorCode::Done:
      return ExplainAnswer(evidence);
    case ErrorCode::NoConnection:
      return ExplainConnection(evidence);
    case ErrorCode::TimedOut:
      return evidence.limitRanOut ? ExplainWaiting(evidence.wait) : ExplainConnectLimit(evidence);
    case ErrorCode::TlsFailure:
      return ExplainTls(evidence);
    case ErrorCode::ProtocolFailure:
      return ExplainBrokenAnswer(evidence);
    default:
      return {};
  }
}

}  // namespace vtdirect::platform
