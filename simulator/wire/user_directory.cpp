#include "simulator/wire/user_directory.h"

#include <utility>

namespace vantry_sim {

UserDirectory::UserDirectory(std::vector<UserCredentials> users, std::vector<UserCredentials> tokens)
    : firstUsers_(std::move(users)), firstTokens_(std::move(tokens)) {
  Reset();
}

bool UserDirectory::open() const {
  const std::lock_guard lock(mutex_);
  return open_;
}

void UserDirectory::SetPassword(std::string_view name, std::string_view password) {
  const std::lock_guard lock(mutex_);
  passwords_[std::string(name)] = password;
  open_ = false;
}

void UserDirectory::AddToken(std::string_view name, std::string_view token) {
  const std::lock_guard lock(mutex_);
  tokens_[std::string(token)] = name;
  open_ = false;
}

bool UserDirectory::Remove(std::string_view name) {
  const std::lock_guard lock(mutex_);
  const auto found = passwords_.find(name);
  const bool hadPassword = found != passwords_.end();
  if (hadPassword) passwords_.erase(found);
  return std::erase_if(tokens_, [&](const auto& entry) { return entry.second == name; }) > 0 || hadPassword;
}

void UserDirectory::Reset() {
  const std::lock_guard lock(mutex_);
  passwords_.clear();
  tokens_.clear();
  // Of two passwords for one name the first counts, as it did before there could be others.
  for (const UserCredentials& user : firstUsers_) passwords_.emplace(user.name, user.password);
  for (const UserCredentials& token : firstTokens_) tokens_.emplace(token.password, token.name);
  open_ = passwords_.empty() && tokens_.empty();
}

std::optional<std::string> UserDirectory::PasswordOf(std::string_view name) const {
  const std::lock_guard lock(mutex_);
  const auto found = passwords_.find(name);
  return found == passwords_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> UserDirectory::NameOf(std::string_view token) const {
  const std::lock_guard lock(mutex_);
  const auto found = tokens_.find(token);
  return found == tokens_.end() ? std::nullopt : std::optional(found->second);
}

bool UserDirectory::hasTokens() const {
  const std::lock_guard lock(mutex_);
  return !tokens_.empty();
}

bool UserDirectory::onlyTokens() const {
  const std::lock_guard lock(mutex_);
  return passwords_.empty() && !tokens_.empty();
}

std::vector<UserDirectory::Listed> UserDirectory::List() const {
  const std::lock_guard lock(mutex_);
  std::map<std::string, Listed> users;
  for (const auto& [name, password] : passwords_) users[name] = {name, true, 0};
  for (const auto& [token, name] : tokens_) {
    users[name].name = name;
    ++users[name].tokens;
  }
  std::vector<Listed> list;
  for (auto& [name, user] : users) list.push_back(std::move(user));
  return list;
}

}  // namespace vantry_sim
