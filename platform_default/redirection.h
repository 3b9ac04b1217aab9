#pragma once

#include <optional>
#include <string>

#include "platform_default/origin.h"

namespace vtdirect::platform {

/// Where a redirect leads: an origin and what is on the request line there.
struct Redirection {
  Origin origin;
  std::string target;
};

/// Whether and where a redirect is followed. User name, password and fragment of its URL are dropped. Pure
/// function.
/// @param url  absolute; empty when the answer names none
/// @return nothing for another scheme than http and https, an unfit host or port, and for a way out of https
[[nodiscard]] std::optional<Redirection> FollowableRedirection(const Origin& from, const std::string& url);

/// True for the step from http to https on one host, of whatever ports. Whoever can answer for the http
/// origin could have demanded a login there in clear, so nothing is given away by a login there that is
/// encrypted.
[[nodiscard]] bool Secures(const Origin& from, const Origin& to);

}  // namespace vtdirect::platform
