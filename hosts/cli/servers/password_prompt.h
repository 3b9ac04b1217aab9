#pragma once

#include <optional>
#include <string>

namespace vtdirect_cli {

struct PasswordCredentials {
  std::string user;
  std::string password;
};

/// Asks for a user name and a password on the terminal that controls the program, the password without echo.
/// The terminal's mode is restored in every case, also when a signal ends the program.
/// @param origin  server to be named in the question
/// @param user    known already; empty asks for it
/// @return nothing without a terminal, and when the user closes the input or gives no name
[[nodiscard]] std::optional<PasswordCredentials> PromptForPassword(const std::string& origin,
                                                                   const std::string& user);

/// Asks for a bearer token in the same way.
/// @return nothing without a terminal, and when the user closes the input
[[nodiscard]] std::optional<std::string> PromptForToken(const std::string& origin);

/// Asks for the passphrase of a key in the same way.
/// @return nothing without a terminal, and when the user closes the input
[[nodiscard]] std::optional<std::string> PromptForPassphrase(const std::string& keyFile);

}  // namespace vtdirect_cli
