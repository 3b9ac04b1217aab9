#pragma once

#include <string>

namespace vtdirect_cli {

/// Reads a small local file: a configuration file, a netrc file.
/// @param privately  refuse, with EPERM, a file that others than its owner may read or write, or that neither
///                   this user nor root owns
/// @return 0, or the error number; EFBIG above 1 MiB
[[nodiscard]] int ReadLocalTextFile(const std::string& path, std::string& text, bool privately = false);

}  // namespace vtdirect_cli
