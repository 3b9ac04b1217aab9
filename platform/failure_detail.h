#pragma once

#include <cstdint>
#include <string>

/// What an exchange failed on, finer than its error code, for messages and for hosts that decide by it.
namespace du::http {

/// The cause of a failed exchange, or of an answer that tells of something between here and the
/// server. docs/troubleshooting.md gives the sentence of each, and what to do next. The numbers never change;
/// later versions may add some.
enum class FailureDetail : std::int32_t {
  Unknown = 0,  ///< nothing more is known than the error code or the HTTP status

  // On the way to the server.
  NameUnknown = 1,
  NameUnanswered = 2,  ///< no name server answered in time
  PortRefused = 3,
  RouteDead = 4,
  ConnectUnanswered = 5,  ///< the machine did not take the connection in time
  WrittenOff = 6,         ///< not tried, since a try a moment ago ended so

  // With the server, once it is connected.
  HandshakeUnanswered = 10,  ///< it took the connection, and did not answer the TLS handshake in time
  AnswerUnanswered = 11,     ///< it took the request, and did not begin to answer in time
  AnswerStalled = 12,        ///< it stopped in the middle of its answer
  BodyStalled = 13,          ///< it stopped taking the request's body
  ClosedUnanswered = 14,
  AnswerCut = 15,
  NoHttp = 16,                ///< what answers there speaks another protocol
  HttpVersionUnknown = 17,    ///< it wants another version of HTTP than 1.1
  WantsHttps = 18,            ///< it speaks TLS there, and was asked without
  WantsHttp = 19,             ///< it does not speak TLS there
  LoginUnknown = 20,          ///< it offers only ways to log in that this side does not know
  CodingUnknown = 21,         ///< its answer is coded in a way that this side does not know
  ForeignServer = 22,         ///< it speaks HTTP and is no Vantry server
  AnswerUnclear = 23,         ///< its answer tells in two ways, or in none that can be read, where it ends
  ContentCoded = 24,          ///< it codes a content that was asked for as it is
  AddressLeavesHttps = 25,    ///< it was asked by https, and names an address with http
  ContentOfOtherLength = 26,  ///< its content is longer or shorter than its record says

  // TLS.
  TlsTooOld = 30,
  TlsNothingInCommon = 31,
  TlsBrokenOff = 32,
  TlsFailed = 33,  ///< for a reason without a number of its own
  CertificateExpired = 34,
  CertificateNotYetValid = 35,
  CertificateOfOtherHost = 36,
  CertificateSelfSigned = 37,
  AuthorityUnknown = 38,
  CertificateInvalid = 39,  ///< for a reason without a number of its own
  AuthorityFileUnreadable = 40,
  AuthorityFileEmpty = 41,
  AuthorityFileBroken = 42,
  ClientCertificateWanted = 43,
  ClientCertificateRefused = 44,
  ClientCertificateUnreadable = 45,
  ClientKeyLocked = 46,

  // A proxy.
  ProxyNameUnknown = 50,
  ProxyUnreachable = 51,
  ProxyUnanswered = 52,
  ProxyWantsLogin = 53,  ///< HTTP 407
  ProxyRefuses = 54,     ///< it does not lead to this server
  GatewayFailed = 55,    ///< HTTP 502 or 504: it cannot reach the server, and may be a gateway as well
};

/// A detail with its sentence.
struct FailureReport {
  FailureDetail detail = FailureDetail::Unknown;  ///< Unknown: no more than the error code says
  /// One English sentence without a full stop: "The name plm.example is not known". It may name hosts, ports,
  /// local files and what a server says of itself, and holds no secret. Empty with Unknown.
  std::string text;
};

}  // namespace du::http
