#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "export.h"
#include "http.h"

/// What the default platform's transport sends and receives, for a host that logs it or looks for what is wrong
/// on the way to a server.
namespace du::http {

/// One message and its answer. The heads are as they were on the wire, with their first line, without the
/// empty line after the last; **they hold secrets**: logins, cookies, nonces.
struct ObservedTurn {
  std::string requestHead;  ///< "CONNECT ..." for the request to a proxy for a tunnel
  std::string answerHead;   ///< of the last answer, after any interim ones; empty when there was none
};

/// A certificate that a server has shown, in the words of the TLS library.
struct ObservedCertificate {
  std::string subject;    ///< whom it is for: "CN = plm.example"
  std::string issuer;     ///< who has signed it
  std::string notBefore;  ///< "Oct  1 00:00:00 2026 GMT"
  std::string notAfter;   ///< the same form
};

/// How long the parts of an exchange took, in microseconds; 0 for what there was not: a kept connection takes no
/// time to connect.
struct ObservedTimes {
  std::int64_t name = 0;     ///< to find the address of the host's name
  std::int64_t connect = 0;  ///< to connect to it, or to the proxy
  std::int64_t tls = 0;      ///< for a tunnel, if there is one, and the handshake
  std::int64_t wait = 0;     ///< from the request to the first byte of the answer, with what was sent
  std::int64_t receive = 0;  ///< from there to the end
};

/// One exchange with one origin. A redirect and another try with other credentials are exchanges of their own; a
/// login that the server asks for, and that the transport has an answer to, is one more turn.
struct ObservedExchange {
  Method method = Method::Get;                    ///< of the request
  std::string url;                                ///< whole, with its query
  ErrorCode result = ErrorCode::Done;             ///< how it ended
  int status = 0;                                 ///< of the last answer; 0 without one
  std::chrono::system_clock::time_point started;  ///< when it began
  ObservedTimes times;                            ///< of its parts
  std::string peer;            ///< address that was connected to, the proxy's if there is one: "127.0.0.1"
  bool newConnection = false;  ///< whether a connection was made for it
  std::vector<ObservedTurn> turns;     ///< in their order; at least one unless nothing could be sent
  std::string requestBody;             ///< its start, as it was sent last
  std::uint64_t requestBodyBytes = 0;  ///< how long it was
  std::string answerBody;              ///< the start of what the caller got, decoded
  std::uint64_t answerBodyBytes = 0;   ///< how long that was
  std::vector<ObservedCertificate> certificates;  ///< of a new connection over TLS, the server's own first
};

/// Called after each exchange, on its thread, while no lock is held; possibly on several threads at once. The
/// exchange keeps its connection meanwhile, so a request to the same origin from here may take another one.
/// Nothing may be thrown.
using ExchangeObserver = std::function<void(const ObservedExchange&)>;

/// Has exchanges observed that begin from now on, in the whole process. An empty function ends that; exchanges
/// that are under way still report. Costs an exchange nothing while there is none. Any thread; makes no request.
/// @param bodyBytes  how much of each body is kept
VTDIRECT_API void SetExchangeObserver(ExchangeObserver observer, std::size_t bodyBytes);

}  // namespace du::http
