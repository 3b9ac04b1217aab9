#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "hosts/cli/commands/command.h"
#include "hosts/mount/fuse/mount.h"

namespace vtdirect_mount {

/// A program waits for a connection for this long at most, unless the options say something else.
inline constexpr long connectSeconds = 10;

/// What the command line asks for.
struct MountOptions {
  MountSettings settings;
  std::string cache;  ///< directory of contents and facts
  std::uint64_t cacheBytes = 0;
  std::string log;  ///< file; empty for standard error
  bool foreground = false;
};

/// Reads the options and operands. All paths are absolute afterwards. Makes no request.
/// @return what can't be meant, or nothing
[[nodiscard]] std::optional<vtdirect_cli::Failure> ReadMountOptions(const vtdirect_cli::Arguments& arguments,
                                                                    MountOptions& options);

}  // namespace vtdirect_mount
