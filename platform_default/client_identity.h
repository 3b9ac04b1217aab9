#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/http_credentials.h"
#include "platform_default/origin.h"

namespace vtdirect::platform {

/// A client certificate as a host has set it, and the passphrase of its key once the host has told it. Any
/// thread.
class ClientIdentity {
 public:
  explicit ClientIdentity(du::http::ClientCertificate certificate);

  [[nodiscard]] const std::string& certificateFile() const { return certificate_.certificateFile; }
  /// The certificate's own file when the key is in it.
  [[nodiscard]] const std::string& keyFile() const;
  /// Reads the file. False too when it can't be read.
  [[nodiscard]] bool IsPkcs12() const;

  /// Asks the host for the passphrase, if the key needs one that isn't known. To be called while no lock and
  /// no place is held. Throws what the host's function throws.
  /// @return false when the host has none
  [[nodiscard]] bool Unlock();
  /// The passphrase that is known; empty when there is none.
  [[nodiscard]] std::string Passphrase() const;
  /// The key could not be read with this one: the host is asked again, unless it has told another one since.
  void ForgetPassphrase(const std::string& unfit);

 private:
  [[nodiscard]] bool NeedsPassphrase() const;
  const du::http::ClientCertificate certificate_;
  mutable std::mutex mutex_;
  std::optional<std::string> passphrase_;
};

/// What is to be shown to an origin now; null when nothing is. Any thread.
[[nodiscard]] std::shared_ptr<ClientIdentity> FindClientIdentity(const Origin& origin);

}  // namespace vtdirect::platform
