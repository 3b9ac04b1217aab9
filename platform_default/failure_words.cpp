#include "platform_default/failure_words.h"

#include <algorithm>
#include <array>

namespace vtdirect::platform {
namespace {

using Detail = du::http::FailureDetail;

constexpr FailureSentence sentences[] = {
    {Detail::NameUnknown, "The name {} is not known"},
    {Detail::NameUnanswered, "No name server told the address of {} within {}"},
    {Detail::PortRefused, "The machine {} refuses connections on port {}"},
    {Detail::RouteDead, "No way leads to {}: {}"},
    {Detail::ConnectUnanswered, "The machine {} did not take the connection on port {} within {}"},
    {Detail::WrittenOff,
     "The machine {} did not answer a moment ago, and is not tried again for some seconds"},
    {Detail::HandshakeUnanswered,
     "The server took the connection and did not answer the TLS handshake within {}"},
    {Detail::AnswerUnanswered, "The server took the request and did not begin to answer within {}"},
    {Detail::AnswerStalled, "The server stopped in the middle of its answer, for {}"},
    {Detail::BodyStalled, "The server stopped taking what was sent, for {}"},
    {Detail::ClosedUnanswered, "The server closed the connection without an answer"},
    {Detail::AnswerCut, "The connection ended before the end of the answer"},
    {Detail::NoHttp, "What answers on port {} of {} does not speak HTTP"},
    {Detail::HttpVersionUnknown, "The server wants another protocol than HTTP/1.1"},
    {Detail::WantsHttps, "The server speaks https on port {}, and was asked by http"},
    {Detail::WantsHttp, "The server does not speak TLS on port {}, and was asked by https"},
    {Detail::LoginUnknown, "The server offers only ways to log in that are not supported here: {}"},
    {Detail::CodingUnknown, "The server packs its answer by {}, which is not supported here"},
    {Detail::AnswerUnclear, "The server's answer does not tell clearly where it ends"},
    {Detail::ContentCoded, "The server packs a content that was asked for as it is"},
    {Detail::TlsTooOld, "The server speaks no version of TLS from 1.2 on"},
    {Detail::TlsNothingInCommon, "The server and this machine have no cipher of TLS in common"},
    {Detail::TlsBrokenOff, "The server closed the connection during the TLS handshake"},
    {Detail::TlsFailed, "The TLS handshake failed: {}"},
    {Detail::CertificateExpired, "The server's certificate expired{}"},
    {Detail::CertificateNotYetValid, "The server's certificate is not valid yet{}"},
    {Detail::CertificateOfOtherHost, "The server's certificate is for {}, and not for {}"},
    {Detail::CertificateSelfSigned, "The server's certificate is signed by itself, and is not trusted here"},
    {Detail::AuthorityUnknown, "The server's certificate comes from an authority that is not trusted here"},
    {Detail::CertificateInvalid, "The server's certificate does not verify: {}"},
    {Detail::AuthorityFileUnreadable, "The file of trusted certificates can't be read: {}"},
    {Detail::AuthorityFileEmpty, "The file of trusted certificates holds no certificate: {}"},
    {Detail::AuthorityFileBroken, "The file of trusted certificates holds a broken certificate: {}"},
    {Detail::ClientCertificateWanted, "The server demands a client certificate, and none is set for it"},
    {Detail::ClientCertificateRefused, "The server refuses the client certificate {}"},
    {Detail::ClientCertificateUnreadable,
     "The client certificate can't be read with the passphrase that was given, if any: {} with the key in "
     "{}"},
    {Detail::ClientKeyLocked, "The key of the client certificate is locked, and no passphrase was given: {}"},
    {Detail::ProxyNameUnknown, "The name of the proxy is not known: {}"},
    {Detail::ProxyUnreachable, "The proxy can't be reached: {}"},
    {Detail::ProxyUnanswered, "The proxy took the connection and did not lead to the server within {}"},
    {Detail::ProxyWantsLogin, "The proxy demands a login, or another one than it was given (HTTP 407)"},
    {Detail::ProxyRefuses, "The proxy refuses to lead to the server (HTTP {})"},
    {Detail::GatewayFailed, "The proxy or gateway in front of the server can't reach it (HTTP {})"},
};

constexpr std::string_view place = "{}";

}  // namespace

std::span<const FailureSentence> FailureSentences() {
  return sentences;
}

du::http::FailureReport ReportOf(Detail detail, std::initializer_list<std::string_view> places) {
  const auto* found = std::find_if(std::begin(sentences), std::end(sentences),
                                   [detail](const FailureSentence& one) { return one.detail == detail; });
  if (found == std::end(sentences)) return {};
  std::string text;
  std::string_view rest = found->pattern;
  const auto* filling = places.begin();
  for (auto at = rest.find(place); at != std::string_view::npos; at = rest.find(place)) {
    text += rest.substr(0, at);
    if (filling != places.end()) text += *filling++;
    rest.remove_prefix(at + place.size());
  }
  return {detail, text.append(rest)};
}

std::string LimitText(long milliseconds) {
  if (milliseconds % 1000 == 0) return std::to_string(milliseconds / 1000) + " s";
  return std::to_string(milliseconds) + " ms";
}

}  // namespace vtdirect::platform
