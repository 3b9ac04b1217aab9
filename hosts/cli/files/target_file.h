#pragma once

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

#include "hosts/cli/exit_code.h"
#include "hosts/cli/interruption.h"

namespace vtdirect_cli {

/// A file name that came with an address, made fit for the current directory: control bytes, "/" and a dot in
/// front become "%hh", so that no name climbs out of the directory, hides there or garbles a listing.
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
/// @return a failure, or nothing
[[nodiscard]] std::optional<Failure> SettleTarget(const std::string& option, const std::string& name,
                                                  bool noClobber, Target& target);

/// A file beside the target that takes its place when it is complete, and is removed otherwise.
class PendingFile {
 public:
  /// Creates it exclusively, readable by its owner alone, in the directory of the target.
  /// @return null, with `error` set, on failure
  [[nodiscard]] static std::unique_ptr<PendingFile> Create(const std::string& target, int* error);
  /// The same in another directory of the target's file system.
  [[nodiscard]] static std::unique_ptr<PendingFile> CreateIn(const std::string& directory,
                                                             const std::string& target, int* error);

  /// The file to write into, by its path.
  [[nodiscard]] const std::string& path() const { return path_; }

  /// Brings the content to the disk and puts the file in the target's place, with the target's permissions
  /// and, where the user may give it, its group; or for a new file with those that the umask leaves.
  /// @param expected  what must be there still: nothing, which fails with EEXIST when a file has come to be,
  /// or
  ///                  the file with these facts, which fails with ESTALE when it was written to; null for
  ///                  whatever is there
  /// @return 0, or the error number; the target is then as it was
  [[nodiscard]] int Commit(const std::optional<struct stat>* expected);

 private:
  PendingFile(std::string path, std::string target);
  std::string path_;
  std::string target_;
  CleanUp removal_;
};

/// Writes all of a local file to an open descriptor.
/// @return 0, or the error number; EINTR when the program was interrupted
[[nodiscard]] int CopyToDescriptor(const std::string& path, int descriptor);

/// Whether the file can take further bytes now: appends a block and takes it back. Called when a download has
/// failed, to tell a full disk from a broken connection.
/// @return 0, or the error number
[[nodiscard]] int ProbeWritable(const std::string& path);

}  // namespace vtdirect_cli
