#pragma once

#include <optional>

struct ssl_ctx_st;

namespace vtdirect::platform {

/// What a server did in a handshake, or after it over the same TLS connection, that an error code of curl's
/// doesn't tell.
struct TlsEvents {
  bool certificateAsked = false;  ///< it asked for a client certificate
  std::optional<int> fatalAlert;  ///< the number of the alert with which it ended the connection
  bool closed = false;            ///< it has closed the TLS connection as it should be
};

/// Notes the events of all TLS connections that are made with `context`.
/// @param events  must outlive these connections
void WatchTls(ssl_ctx_st* context, TlsEvents* events);

/// True when the server ended the connection because of the certificate that it was shown or not shown. With
/// TLS 1.3 that comes when the handshake is over on this side and the request may be on its way already; the
/// server has not read any of it.
[[nodiscard]] bool RefusedCertificate(const TlsEvents& events);

}  // namespace vtdirect::platform
