#include "hosts/cli/texts/network_failures.h"

#include <algorithm>
#include <iterator>

#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

using Detail = du::http::FailureDetail;
using Kind = VtDirectManager::FailureKind;

// So much of what a server says fits into a message.
constexpr std::size_t longestServerText = 200;

constexpr const char* clockAdvice =
    "ask who runs the server for a new certificate, and look at this machine's date";
constexpr const char* trustAdvice =
    "name the file of that certificate, or of its authority, by --ca-file or ca_file, if you know it to be "
    "genuine";
constexpr const char* authorityFileAdvice =
    "name a PEM file with the certificates to trust by --ca-file or ca_file";
constexpr const char* clientCertificateAdvice =
    "name the right one by --client-cert and --client-key, or client_cert and client_key";
constexpr const char* proxyAdvice =
    "look at --proxy, at proxy in the configuration file, and at http_proxy and https_proxy";
constexpr const char* slowAdvice = "try again later, or with a larger --stall-timeout";
constexpr const char* againAdvice = "try again; if it stays so, ask who runs the server";
constexpr const char* addressAdvice = "look whether host, port and path of the server's address are right";
constexpr const char* administratorAdvice = "ask who runs the server";

constexpr NetworkAdvice advices[] = {
    {Detail::NameUnknown, Reached::Nobody,
     "look whether the server's name is spelt right, and whether this machine has a network"},
    {Detail::NameUnanswered, Reached::Nobody,
     "look whether this machine has a network and a name server that answers"},
    {Detail::PortRefused, Reached::Nobody,
     "look whether the server runs, and whether its address has the right port"},
    {Detail::RouteDead, Reached::Nobody,
     "look whether this machine has a network, and whether the server needs a VPN or a proxy"},
    {Detail::ConnectUnanswered, Reached::Nobody,
     "look whether the server runs and no firewall is between, or try again with a larger --connect-timeout"},
    {Detail::WrittenOff, Reached::Nobody, "wait five seconds, and look whether the server runs"},
    {Detail::HandshakeUnanswered, Reached::Somebody,
     "look whether the server speaks https on this port, or try again later"},
    {Detail::AnswerUnanswered, Reached::Somebody, slowAdvice},
    {Detail::AnswerStalled, Reached::Somebody, slowAdvice},
    {Detail::BodyStalled, Reached::Somebody, slowAdvice},
    {Detail::ClosedUnanswered, Reached::Somebody,
     "try again; if it stays so, look whether the address should begin with https"},
    {Detail::AnswerCut, Reached::Somebody, againAdvice},
    {Detail::NoHttp, Reached::Somebody, addressAdvice},
    {Detail::HttpVersionUnknown, Reached::Somebody, "ask who runs the server to offer HTTP/1.1"},
    {Detail::WantsHttps, Reached::Somebody, "write https in place of http in the server's address"},
    {Detail::WantsHttp, Reached::Somebody,
     "look whether the port is right; write http in place of https only where nobody can listen in"},
    {Detail::LoginUnknown, Reached::Somebody,
     "ask who runs the server to offer Basic, Digest, Negotiate or Bearer"},
    {Detail::CodingUnknown, Reached::Somebody,
     "ask who runs the server, or the proxy before it, to send answers as they are or by gzip"},
    {Detail::ForeignServer, Reached::Somebody, addressAdvice},
    {Detail::AnswerUnclear, Reached::Somebody, administratorAdvice},
    {Detail::ContentCoded, Reached::Somebody,
     "ask who runs the server, or the proxy before it, to send contents as they are"},
    {Detail::AddressLeavesHttps, Reached::Somebody,
     "if a proxy before the server speaks https, set http_addresses = upgrade in the server's section of the "
     "configuration file"},
    {Detail::ContentOfOtherLength, Reached::Somebody, againAdvice},
    {Detail::TlsTooOld, Reached::Somebody, "ask who runs the server to offer TLS 1.2 or newer"},
    {Detail::TlsNothingInCommon, Reached::Somebody, "ask who runs the server to offer the usual ciphers"},
    {Detail::TlsBrokenOff, Reached::Somebody,
     "look whether the server speaks https on this port, or try again later"},
    {Detail::TlsFailed, Reached::Somebody, administratorAdvice},
    {Detail::CertificateExpired, Reached::Somebody, clockAdvice},
    {Detail::CertificateNotYetValid, Reached::Somebody, clockAdvice},
    {Detail::CertificateOfOtherHost, Reached::Somebody,
     "write the server's address with a name that the certificate is for"},
    {Detail::CertificateSelfSigned, Reached::Somebody, trustAdvice},
    {Detail::AuthorityUnknown, Reached::Somebody, trustAdvice},
    {Detail::CertificateInvalid, Reached::Somebody, administratorAdvice},
    {Detail::AuthorityFileUnreadable, Reached::Nobody, authorityFileAdvice},
    {Detail::AuthorityFileEmpty, Reached::Nobody, authorityFileAdvice},
    {Detail::AuthorityFileBroken, Reached::Nobody, authorityFileAdvice},
    {Detail::ClientCertificateWanted, Reached::Somebody,
     "name yours by --client-cert and --client-key, or client_cert and client_key"},
    {Detail::ClientCertificateRefused, Reached::Somebody, clientCertificateAdvice},
    {Detail::ClientCertificateUnreadable, Reached::Nobody, clientCertificateAdvice},
    {Detail::ClientKeyLocked, Reached::Nobody,
     "give the passphrase when you are asked, or by VTDIRECT_KEY_PASSPHRASE"},
    {Detail::ProxyNameUnknown, Reached::Nobody, proxyAdvice},
    {Detail::ProxyUnreachable, Reached::Nobody, proxyAdvice},
    {Detail::ProxyUnanswered, Reached::Nobody, proxyAdvice},
    {Detail::ProxyWantsLogin, Reached::Nobody, "set VTDIRECT_PROXY_USER and VTDIRECT_PROXY_PASSWORD"},
    {Detail::ProxyRefuses, Reached::Nobody,
     "ask who runs the proxy, or reach the server without it by --proxy none"},
    {Detail::GatewayFailed, Reached::Nobody,
     "try again later; if it stays so, ask who runs the server or the proxy"},
};

[[nodiscard]] const NetworkAdvice* AdviceOf(int detail) {
  const auto* found =
      std::find_if(std::begin(advices), std::end(advices),
                   [detail](const NetworkAdvice& row) { return static_cast<int>(row.detail) == detail; });
  return found == std::end(advices) ? nullptr : found;
}

// The library's sentences begin with a capital; here they follow a colon.
[[nodiscard]] std::string InASentence(const std::string& text) {
  std::string inner = Printable(text);
  if (!inner.empty() && inner[0] >= 'A' && inner[0] <= 'Z')
    inner[0] = static_cast<char>(inner[0] - 'A' + 'a');
  return inner;
}

[[nodiscard]] const char* MeaningOf(int status) {
  switch (status) {
    case 403:
      return "the server refuses the request";
    case 429:
      return "the server is asked too often";
    case 503:
      return "the server is not ready to work";
    default:
      return status >= 500 ? "the server failed" : "the server answers otherwise than it should";
  }
}

// Of an answer that says by its status that nothing can be had of this server now.
[[nodiscard]] NetworkFailure FailureOfStatus(const Reason& reason) {
  NetworkFailure failure;
  failure.reached = Reached::Somebody;
  failure.what =
      std::string(MeaningOf(reason.httpStatus)) + " (HTTP " + std::to_string(reason.httpStatus) + ")";
  const std::string said = Printable(reason.serverText.substr(0, longestServerText));
  if (!said.empty()) failure.what += ": " + said;
  failure.advice = reason.httpStatus >= 500 || reason.httpStatus == 429 ? "try again later" : addressAdvice;
  return failure;
}

[[nodiscard]] std::optional<NetworkFailure> AnyFailureOf(const Reason& reason) {
  auto failure = NetworkFailureOf(reason);
  if (!failure && reason.httpStatus != 0) failure = FailureOfStatus(reason);
  return failure;
}

[[nodiscard]] std::string WithAdvice(const NetworkFailure& failure) {
  return failure.advice.empty() ? failure.what : failure.what + "; " + failure.advice;
}

}  // namespace

std::span<const NetworkAdvice> NetworkAdvices() {
  return advices;
}

std::optional<NetworkFailure> NetworkFailureOf(const Reason& reason) {
  if (const NetworkAdvice* advice = AdviceOf(reason.platformDetail)) {
    return NetworkFailure{advice->reached, InASentence(reason.platformText), advice->text};
  }
  // A later platform may know details that this program does not.
  if (!reason.platformText.empty())
    return NetworkFailure{Reached::Somebody, InASentence(reason.platformText), {}};
  switch (reason.kind) {
    case Kind::TimedOut:
      return NetworkFailure{Reached::Somebody, "the server did not answer in time", slowAdvice};
    case Kind::AnswerBroken:
      return NetworkFailure{Reached::Somebody, "the answer is not what a server of this kind gives",
                            addressAdvice};
    default:
      return std::nullopt;
  }
}

Failure UnusableServer(const std::string& url, const std::optional<Reason>& reason,
                       const std::string& address) {
  const auto failure = reason ? AnyFailureOf(*reason) : std::nullopt;
  if (!failure) return {ExitCode::CannotConnect, "cannot connect to " + url, {}, reason};
  const std::string subject = address.empty() ? url : url + " for " + address;
  return {ExitCode::CannotConnect,
          (failure->reached == Reached::Somebody ? "no usable answer from " + subject
                                                 : "cannot connect to " + url) +
              ": " + failure->what,
          failure->advice, reason};
}

std::string AnswerText(const Reason& reason) {
  const auto failure = AnyFailureOf(reason);
  return failure ? WithAdvice(*failure) : std::string();
}

std::string NetworkHint(const std::optional<Reason>& reason) {
  if (!reason || reason->platformText.empty()) return {};
  return AnswerText(*reason);
}

}  // namespace vtdirect_cli
