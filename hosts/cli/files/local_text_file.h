#pragma once

#include <string>

namespace vtdirect_cli {

/// What was read of a small local file.
struct LocalText {
  int error = 0;     ///< 0, or the error number; EFBIG above 1 MiB
  std::string text;  ///< whole if there is no error
};

/// Reads a small local file: a configuration file, a state file.
[[nodiscard]] LocalText ReadLocalTextFile(const std::string& path);

/// Reads a small local file that holds secrets: a netrc file. The error is EPERM for a file that others than its
/// owner may read or write, or that neither this user nor root owns.
[[nodiscard]] LocalText ReadPrivateTextFile(const std::string& path);

}  // namespace vtdirect_cli
