#pragma once

#include <optional>
#include <string>

#include "platform_default/origin.h"

namespace vtdirect::platform {

enum class CredentialKind { Password, Token, Negotiate };

/// What a host has set for one origin: a password with its user, a bearer token, or that it is to be logged
/// in to by Negotiate.
struct Credentials {
  CredentialKind kind = CredentialKind::Password;
  std::string user;
  std::string secret;  ///< the password or the token
};

/// What a host has set for its proxy.
struct ProxyCredentials {
  std::string user;
  std::string password;
  friend bool operator==(const ProxyCredentials&, const ProxyCredentials&) = default;
};

/// The credentials that are set for an origin now. Any thread.
[[nodiscard]] std::optional<Credentials> FindCredentials(const Origin& origin);

/// The credentials of the proxy now. Any thread.
[[nodiscard]] std::optional<ProxyCredentials> FindProxyCredentials();

}  // namespace vtdirect::platform
