#pragma once

#include <optional>
#include <string>

#include "platform_default/origin.h"

namespace vtdirect::platform {

/// What a host has set for one origin: a password with its user, or a bearer token.
struct Credentials {
  bool isToken = false;
  std::string user;
  std::string secret;  ///< the password or the token
};

/// The credentials that stand for an origin now. Any thread.
[[nodiscard]] std::optional<Credentials> FindCredentials(const Origin& origin);

}  // namespace vtdirect::platform
