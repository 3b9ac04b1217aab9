#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hosts/cli/failures/result.h"

namespace vtdirect_cli {

/// What a credential helper is told and answers: lines of "key=value", as git's helpers speak them.
using HelperFields = std::vector<std::pair<std::string, std::string>>;

/// The fields of an answer, up to the first empty line; nothing for a text that is none: a line without a
/// "=", or one that holds a zero byte.
[[nodiscard]] std::optional<HelperFields> ReadHelperAnswer(std::string_view text);

/// The last value of a field; empty when it isn't there.
[[nodiscard]] std::string ValueOf(const HelperFields& fields, std::string_view key);

/// A program that keeps passwords and speaks the protocol of git's credential helpers: a keyring, a password
/// manager. It is run by the shell, as "COMMAND get", "COMMAND store" or "COMMAND erase", and ended with all
/// that it started when it takes too long or the program is interrupted. Its standard error is the program's
/// own. It has no terminal to ask at.
class CredentialHelper {
 public:
  /// @param command  command line for the shell
  /// @param seconds  longest time of one run
  CredentialHelper(std::string command, long seconds) : command_(std::move(command)), seconds_(seconds) {}

  /// Asks for what goes with the fields.
  /// @return the answer, which may hold nothing, or why there is none that can be used
  [[nodiscard]] Result<HelperFields> Get(const HelperFields& about) const;

  /// Has it keep what was accepted. What goes wrong is given back for a warning, and is empty otherwise.
  [[nodiscard]] std::string Store(const HelperFields& accepted) const;

  /// Has it forget what was refused.
  [[nodiscard]] std::string Erase(const HelperFields& refused) const;

 private:
  [[nodiscard]] Result<std::string> Run(const char* action, const HelperFields& fields) const;
  [[nodiscard]] std::string Tell(const char* action, const HelperFields& fields) const;

  std::string command_;
  long seconds_;
};

}  // namespace vtdirect_cli
