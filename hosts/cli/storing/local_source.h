#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

#include "hosts/cli/result.h"

namespace vtdirect_cli {

/// A local file that is to be sent, as it was when it was looked at.
struct LocalSource {
  std::string path;
  struct stat facts = {};

  [[nodiscard]] std::uint64_t size() const { return static_cast<std::uint64_t>(facts.st_size); }
};

/// Looks at a file and tries whether it can be read.
/// @return a failure for what is missing, is no regular file or can't be opened
[[nodiscard]] Result<LocalSource> InspectSource(const std::string& path);

/// Whether the file is still the one that was looked at, with nothing written to it since.
[[nodiscard]] bool IsUnchanged(const LocalSource& source);

/// The last component of a path; empty when it ends in "/".
[[nodiscard]] std::string BaseNameOf(const std::string& path);

}  // namespace vtdirect_cli
