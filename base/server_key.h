#pragma once

#include <string>
#include <string_view>

/// A server's identity as text: the key of the server table and the base of every UID. Pure functions, but
/// for the scheme, which is the configured one unless it is given.
namespace lxservices::cms_interface {

/// Makes the key of a server URL: "https://plm.example/vt" gives "korvufenloom-vt://plm.example/vt/".
///
/// "http" and "https" URLs of one server give one key, and a text in the form of a key gives itself. The two
/// are told by their lower-case names alone.
/// @return the empty text for null and for any other scheme
[[nodiscard]] std::string NormalizeServerUri(const char* url);

/// NormalizeServerUri with the scheme of UIDs given, for whoever makes several keys that belong together.
[[nodiscard]] std::string NormalizeServerUri(const char* url, std::string_view uidScheme);

/// The text with "/" after it, unless it is empty or ends in one.
[[nodiscard]] std::string WithTrailingSlash(std::string_view url);

}  // namespace lxservices::cms_interface
