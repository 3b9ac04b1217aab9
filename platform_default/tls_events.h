#pragma once

#include <optional>
#include <string>

struct ssl_ctx_st;

namespace vtdirect::platform {

/// Why a server's certificate did not verify.
struct CertificateFault {
  int code = 0;  ///< X509_V_ERR_...; 0 when it did verify, but for its host
  bool isOfAuthority = false;
  std::string date;  ///< of its end, or of its beginning when that is still to come: "2026-10-01"
};

/// What a server did in a handshake, or after it over the same TLS connection, that an error code of curl's
/// doesn't tell.
struct TlsEvents {
  bool begun = false;             ///< a handshake was about to begin
  bool certificateAsked = false;  ///< it asked for a client certificate
  std::optional<int> fatalAlert;  ///< the number of the alert with which it ended the connection
  bool closed = false;            ///< it has closed the TLS connection as it should be
  std::optional<int> ownAlert;    ///< of the alert with which this side did
  CertificateFault fault;
  /// The hosts that its certificate is for: "a.example, b.example"; empty for one that names none.
  std::string certificateHosts;
  const ssl_ctx_st* context = nullptr;  ///< of the connection that they are of
};

/// Forgets what was noted. From now on it is what the connection with this context does, perhaps a kept one.
void BeginAnew(TlsEvents* events, const ssl_ctx_st* context);

/// Notes the events of the TLS connection that is made with `context`, and no more those of one before: its close
/// says nothing of what comes over this one.
/// @param events  begins anew; must outlive both connections
void WatchTls(ssl_ctx_st* context, TlsEvents* events);

/// True when the server ended the connection because of the certificate that it was shown or not shown. With
/// TLS 1.3 that comes when the handshake is over on this side and the request may be on its way already; the
/// server has not read any of it.
[[nodiscard]] bool RefusedCertificate(const TlsEvents& events);

}  // namespace vtdirect::platform
