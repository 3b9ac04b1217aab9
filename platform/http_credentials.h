#pragma once

#include <string>

#include "export.h"

/// Credentials of the default platform. A host sets them per origin, as a rule from inside its authentication
/// callback. They are sent to that origin (scheme, host and port) only, never to where a redirect leads.
///
/// Credentials that stand already are used before the host is asked: a token at once; a password when the
/// server asks for it, from then on at once, and at once also with a body that goes out over https, which
/// would be sent in vain otherwise. A header line "Authorization" of the caller's own goes before them.
///
/// Each call begins a new session with its origin: cookies, the connections that are kept and what was
/// learned of how the server takes a password are forgotten, also when the same credentials are set once
/// more. Exchanges that are under way finish with what they began with; one that is refused tries the new
/// credentials before it asks the host.
///
/// All functions may be called from any thread, from inside callbacks too, and make no request.
namespace du::http {

/// Sends user name and password, by Basic or Digest as the server asks, to the origin of `url`.
/// Replaces whatever was set for that origin. A URL without a usable origin and a user name with a control
/// byte are ignored.
VTDIRECT_API void SetPasswordCredentials(const std::string& url, const std::string& user,
                                         const std::string& password);

/// Sends a bearer token to the origin of `url`. Replaces whatever was set for that origin. A token with a
/// control byte is ignored.
VTDIRECT_API void SetBearerToken(const std::string& url, const std::string& token);

/// Forgets what was set for the origin of `url`.
VTDIRECT_API void ClearCredentials(const std::string& url);

/// Forgets the credentials of all origins.
VTDIRECT_API void ClearAllCredentials();

}  // namespace du::http
