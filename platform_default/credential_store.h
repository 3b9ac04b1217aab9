#pragma once

#include <optional>
#include <string>

#include "platform_default/origin.h"

namespace vtdirect::platform {

/// How a server takes a password, as far as it has told.
enum class PasswordScheme { Unknown, Basic, Digest };

/// What a host has set for one origin: a password with its user, or a bearer token.
struct Credentials {
  bool isToken = false;
  std::string user;
  std::string secret;  ///< the password or the token
  /// What any connection to this origin has learned, so that a fresh one needs no round trip to ask.
  PasswordScheme scheme = PasswordScheme::Unknown;
};

/// The credentials that stand for an origin now. Any thread.
[[nodiscard]] std::optional<Credentials> FindCredentials(const Origin& origin);

/// Keeps with the credentials of an origin how its server takes a password. Without credentials nothing is
/// kept.
void RememberPasswordScheme(const Origin& origin, PasswordScheme scheme);

}  // namespace vtdirect::platform
