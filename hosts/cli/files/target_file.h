#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "hosts/cli/failures/result.h"

namespace vtdirect_cli {

/// A file name that came with an address, made fit for the current directory: control characters, those that
/// turn the direction of writing, the line and paragraph separators, "/" and a dot in front become "%hh", so
/// that no name climbs out of the directory, hides there, garbles a listing or looks like another one.
/// @return empty for an empty name
[[nodiscard]] std::string SafeFileName(const std::string& name);

/// Where the content is to go.
struct Target {
  enum class Kind { File, Device, StandardOutput };
  Kind kind = Kind::File;
  /// Full or relative path; for a symbolic link, the file that it leads to.
  std::string path;
  /// What was there when the target was settled; nothing without a regular file.
  std::optional<struct stat> before = std::nullopt;
};

/// Whether the option means a directory, so that a file name is needed to complete it: it is empty (no
/// option), ends in "/", or is a directory.
[[nodiscard]] bool NeedsFileName(const std::string& option);

/// Settles the target before any content is asked for.
/// @param option    value of -o; empty when it wasn't given; "-" means standard output
/// @param name      completes a directory; unused otherwise
/// @param noClobber refuse a file that exists
[[nodiscard]] Result<Target> SettleTarget(const std::string& option, const std::string& name, bool noClobber);

/// Writes all of a local file to an open descriptor.
/// @return 0, or the error number; EINTR when the program was interrupted
[[nodiscard]] int CopyToDescriptor(const std::string& path, int descriptor);

/// Whether the file can take further bytes now: appends a block and takes it back. Called when a download has
/// failed, to tell a full disk from a broken connection.
/// @return 0, or the error number
[[nodiscard]] int ProbeWritable(const std::string& path);

}  // namespace vtdirect_cli
