#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "export.h"

/// Limits, connections and trust of the default platform's transport, process-wide.
namespace du::http {

/// For every limit below that counts time: no limit.
inline constexpr long neverTimesOut = std::numeric_limits<long>::max();

/// What becomes of an "http" address that a server names which was itself asked by "https": the address of a
/// content, of the next page of a listing, or of an upload.
enum class HttpAddresses {
  Refuse,   ///< nothing is sent there
  Allow,    ///< it is asked as it is, in clear: contents and the nonce can be read and changed on the way
  Upgrade,  ///< the same host is asked by "https", at the port that was named, or at 443 for none and for 80
};

/// How the transport waits, keeps connections and trusts. A limit that ends a POST or PATCH leaves open
/// whether the server has carried it out: see DoRequestWithCommonAuth. Of each number below, zero or less
/// means the default unless it says otherwise, and any larger value works.
struct TransportSettings {
  /// Longest time to set up a connection with all that belongs to it (name, TCP, proxy, TLS), in
  /// milliseconds. Counts up to 24 days; what is longer means these.
  long connectTimeoutMilliseconds = 30'000;
  /// An exchange is ended when no byte of its body goes out, or no byte of an answer that has begun comes in,
  /// for this long, at most a second later.
  long stallTimeoutSeconds = 60;
  /// Longest wait for the first byte of an answer, once the request is out. A server may have much to search
  /// before it answers, so this is far more than the stall limit.
  long firstByteTimeoutSeconds = 300;
  /// The same for a request with a body, once the body is out: a server that stores a large file may work on
  /// it for minutes.
  long firstByteAfterBodyTimeoutSeconds = 900;
  /// Connections that are kept for each origin (scheme, host and port) when no exchange uses them, so that
  /// the next one needs no new handshake; zero or less keeps none.
  int idleConnections = 8;
  /// Longest time that a kept connection stays idle. It is closed by the first exchange with any origin after
  /// that, since the library starts no thread.
  long idleSeconds = 60;
  /// Exchanges with one origin at one time. Further ones wait for a place, in the order in which they came
  /// and as long as it takes: every exchange that has a place moves bytes or is ended by a limit above. One
  /// that begins inside another one's callback, source or sink never waits, and may exceed this.
  int exchangesAtOnce = 16;
  /// File of trusted certificates in PEM form, in place of the system's; empty means the system's. It is read
  /// when it is first needed, and again when it has changed. A file that can't be read or holds no
  /// certificate makes every exchange over TLS end with TlsFailure.
  std::string certificateAuthorityFile;
  /// Answers with a demand for authentication that one request will follow up with a further try; zero or
  /// less means none.
  int authenticationTries = 3;
  /// Redirects that one GET follows; zero or less means none.
  int redirects = 10;
  /// The proxy to all servers, in place of what the environment says: "http://host:port", "https://host:port"
  /// or any other form that the environment may have. Without a value the environment decides (`http_proxy`,
  /// `https_proxy`, `all_proxy` and `no_proxy`); the empty text means no proxy at all. A server over http is
  /// asked through it, one over https is reached by a tunnel (CONNECT), in which the proxy sees host and port
  /// alone. A text that names no proxy makes every exchange end with NoConnection. User name and password:
  /// SetProxyCredentials in http_credentials.h.
  std::optional<std::string> proxy;
  /// Hosts that are reached without `proxy`, separated by commas; "plm.example" stands for the hosts below
  /// it too, "*" for all. Takes the place of `no_proxy`, also when it is empty. Counts only together with
  /// `proxy`.
  std::string proxyExceptions;
  /// Asks for compressed answers (gzip, deflate) where the caller's lines accept JSON or XML. Contents are
  /// never asked for that way. Sinks get what is decoded: their limits and a progress function count that,
  /// and no length is announced for an answer that comes compressed.
  bool compressedAnswers = true;
  /// Longest temporary file of an answer, in bytes. A longer answer that is not for a file of the caller's ends
  /// its exchange with LocalFileFailure, and so does one that would take the last 64 MiB of the file system.
  std::int64_t largestTemporaryFile = std::int64_t{4} << 30;
  /// For sites whose proxy speaks https, and whose server does not know it and names addresses with http. A
  /// redirect never leaves https, whatever this says.
  HttpAddresses httpAddresses = HttpAddresses::Refuse;
};

/// Replaces the settings. Counts for requests that begin afterwards; those that are under way keep theirs.
/// With another certificateAuthorityFile, proxy or proxyExceptions, kept connections are closed and all
/// sessions end (http_credentials.h). May be called from any thread, from inside callbacks too.
VTDIRECT_API void SetTransportSettings(const TransportSettings& settings);

/// A copy of the settings in force.
[[nodiscard]] VTDIRECT_API TransportSettings GetTransportSettings();

}  // namespace du::http
