#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/options.h"

namespace vantry_sim {

/// Who may come in, which may change while the server runs. Any thread.
class UserDirectory {
 public:
  UserDirectory(std::vector<UserCredentials> users, std::vector<UserCredentials> tokens);

  /// Whether anybody may come in: no user and no token was ever named.
  [[nodiscard]] bool open() const;

  /// Adds a user, or gives a known one another password. The server is no longer open then.
  void SetPassword(std::string_view name, std::string_view password);
  /// Gives a user a token, beside those that it has.
  void AddToken(std::string_view name, std::string_view token);
  /// Takes a user's password and tokens away. @return false for one who had neither
  bool Remove(std::string_view name);
  /// Those of the start come in, and nobody else.
  void Reset();

  [[nodiscard]] std::optional<std::string> PasswordOf(std::string_view name) const;
  /// The user whose token it is.
  [[nodiscard]] std::optional<std::string> NameOf(std::string_view token) const;
  /// Whether there are tokens at all.
  [[nodiscard]] bool hasTokens() const;
  /// Whether nobody has a password, though somebody has a token.
  [[nodiscard]] bool onlyTokens() const;

  /// A user as others may know it.
  struct Listed {
    std::string name;
    bool hasPassword = false;
    std::size_t tokens = 0;
  };
  [[nodiscard]] std::vector<Listed> List() const;

 private:
  const std::vector<UserCredentials> firstUsers_;
  const std::vector<UserCredentials> firstTokens_;
  mutable std::mutex mutex_;
  bool open_ = true;
  std::map<std::string, std::string, std::less<>> passwords_;  ///< by name
  std::map<std::string, std::string, std::less<>> tokens_;     ///< names by token
};

}  // namespace vantry_sim
