#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "simulator/options.h"

namespace vantry_sim {

/// Whoever asks an open server without saying who.
inline constexpr std::string_view openServerUser = "anna";

/// The name and the password of an Authorization header of the scheme Basic; nothing for any other.
std::optional<UserCredentials> ReadBasic(std::string_view authorization);

/// What follows the scheme in an Authorization header; nothing for another scheme. @param scheme in lower
/// case; the header's case doesn't count
std::optional<std::string_view> CredentialsOf(std::string_view authorization, std::string_view scheme);

/// Decodes base64 with or without "=" at its end; nothing for any other character.
std::optional<std::string> DecodeBase64(std::string_view text);

/// Encodes with "=" at the end.
std::string EncodeBase64(std::string_view bytes);

}  // namespace vantry_sim
