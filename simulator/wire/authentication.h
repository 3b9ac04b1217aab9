#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/options.h"

namespace vantry_sim {

/// Whoever asks an open server without saying who.
inline constexpr std::string_view kOpenServerUser = "anna";

/// Decides who asks.
/// @param authorization the value of the Authorization header, empty without one
/// @param users who may come in; empty: the server is open, any name is believed, and kOpenServerUser stands
/// for
///        a request without a name
/// @return the user's name; nothing for a refusal
std::optional<std::string> Authenticate(std::string_view authorization,
                                        const std::vector<UserCredentials>& users);

/// Decodes base64 with or without "=" at its end; nothing for any other character.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace vantry_sim
