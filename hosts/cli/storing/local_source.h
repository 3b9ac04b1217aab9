#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

#include "hosts/cli/failures/result.h"

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

/// Copies a file that was looked at, under its own name, into a new directory, so that what is sent is one whole
/// file whoever writes to the other one meanwhile.
/// @param directory  is made, and is the caller's to remove
/// @return the copy's path; a failure for a file that was written to since it was looked at or while it was copied, and
///         for a copy that is not whole
[[nodiscard]] Result<std::string> CopySource(const LocalSource& source, const std::string& directory);

/// The failure of a file that was written to while it was read, and of which nothing has gone out.
[[nodiscard]] Failure SourceWasWrittenTo(const std::string& path, const std::string& consequence);

/// The last component of a path; empty when it ends in "/".
[[nodiscard]] std::string BaseNameOf(const std::string& path);

}  // namespace vtdirect_cli
