#pragma once

#include <string>
#include <vector>

namespace vtdirect_mount {

/// Runs vtdirect, which has all that a store or a checkout takes: it looks before it acts, keeps source links,
/// writes a journal, and says what went wrong. Any thread.
class CommandRunner {
 public:
  /// @param words      the program and the options that every call has
  /// @param directory  where it runs, since options may name files from there
  CommandRunner(std::vector<std::string> words, std::string directory)
      : words_(std::move(words)), directory_(std::move(directory)) {}

  /// Runs a command to its end.
  /// @return what it said on standard error when it failed; the empty text when it succeeded
  [[nodiscard]] std::string Run(const std::vector<std::string>& command) const;

 private:
  const std::vector<std::string> words_;
  const std::string directory_;
};

/// Has a command go to the server that the nickname of an address means in this process: vtdirect reads its list of
/// servers anew, in which the nickname may mean another one by now.
void PinServer(const std::string& address, std::vector<std::string>& command);

}  // namespace vtdirect_mount
