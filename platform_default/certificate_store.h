#pragma once

#include <curl/curl.h>

#include <string>

struct ssl_ctx_st;

namespace vtdirect::platform {

/// Where trusted certificates come from: a PEM file, a directory in OpenSSL's layout, or both. Empty means
/// that there is none.
struct TrustSource {
  std::string file;
  std::string directory;
  friend bool operator==(const TrustSource&, const TrustSource&) = default;
};

/// True when the libcurl of this process uses the very OpenSSL that we are linked with, so that certificates
/// can be read once and handed to it. With any other, each connection reads them by itself.
[[nodiscard]] bool CanShareCertificates();

/// Gives the TLS context of a new connection the certificates of a source. They are read when they are first
/// needed, and once more only when the file has changed, since reading the system's takes longer than all the
/// rest of a handshake.
/// @return CURLE_SSL_CACERT_BADFILE, which ends the handshake, when the file can't be read or holds no
///         certificate
[[nodiscard]] CURLcode GiveCertificates(ssl_ctx_st* context, const TrustSource& source);

/// What is wrong with a file of trusted certificates.
enum class TrustFault { None, Unreadable, Empty, Broken };

/// Why the certificates of a file could not be taken: reads it. `Empty` when not even the beginning of one is
/// in it, `Broken` for everything else that could be read.
[[nodiscard]] TrustFault FaultOfTrustFile(const std::string& file);

/// True when curl has given the context certificates by itself. It has been told of none but for a proxy's
/// own TLS.
[[nodiscard]] bool BelongsToProxy(const ssl_ctx_st* context);

}  // namespace vtdirect::platform
