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

}  // namespace vtdirect_mount
