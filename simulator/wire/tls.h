#pragma once

#include <memory>
#include <string>

#include "simulator/wire/transport.h"

struct ssl_ctx_st;

namespace vantry_sim {

/// A certificate and its key, ready to serve with. Any thread.
class TlsIdentity {
 public:
  /// @param certificate, key names of PEM files, the certificate's with the chain after it. @throws
  /// std::runtime_error that says which of them is wrong, and why
  TlsIdentity(const std::string& certificate, const std::string& key);
  TlsIdentity(const TlsIdentity&) = delete;
  TlsIdentity& operator=(const TlsIdentity&) = delete;
  ~TlsIdentity();

  /// TLS over a socket. @param socket taken over. The identity outlives what is made
  [[nodiscard]] std::unique_ptr<Transport> Carry(int socket) const;

 private:
  ssl_ctx_st* context_;
};

/// Names of a certificate and its key.
struct TlsFiles {
  std::string certificate;
  std::string key;
};

/// A certificate for this machine's loopback names in a directory, `cert.pem` and `key.pem`: the one that is
/// there, unless it is missing, about to expire or for another address. Only one that was made here is replaced.
/// Clients trust it by taking `cert.pem` for an authority.
/// @param address that the server listens on, which the certificate names too. @throws std::runtime_error that
/// names the file of somebody else that would have to be replaced, or cannot be read
TlsFiles SelfSignedFiles(const std::string& directory, const std::string& address);

}  // namespace vantry_sim
