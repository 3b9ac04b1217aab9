#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform_default/client_identity.h"
#include "platform_default/credential_store.h"
#include "platform_default/origin.h"

namespace vtdirect::platform {

/// How connections to an origin are made: what they trust, what they show of themselves, and through which
/// proxy they go. It belongs to a session. A connection or a TLS session that was made in one way is of no
/// use in another.
struct ConnectionWay {
  std::string certificateAuthorityFile;      ///< empty means the system's certificates
  std::shared_ptr<ClientIdentity> identity;  ///< null when nothing is shown
  std::optional<std::string> proxy;          ///< nothing: as the environment says; empty: none
  std::string proxyExceptions;
  std::optional<ProxyCredentials> proxyCredentials;

  friend bool operator==(const ConnectionWay&, const ConnectionWay&) = default;
};

/// The way of now.
/// @param home  where the redirects that lead to `origin` begin; the same origin for the direct way. Nothing
/// is
///              shown to an origin that a redirect leads to.
[[nodiscard]] ConnectionWay ConnectionWayTo(const Origin& home, const Origin& origin);

}  // namespace vtdirect::platform
