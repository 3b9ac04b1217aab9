#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "hosts/cli/program/interruption.h"

/// What all files have in common that must be whole or not there. Errors are error numbers; 0 is none.
namespace vtdirect_cli {

/// The directory that a path names a file in; "." for a path without one.
[[nodiscard]] std::string DirectoryOf(const std::string& path);

/// Brings a directory's own entries to the disk, or a crash could bring back the old file. Some filesystems
/// can't do this, which takes nothing from the file itself.
void SyncDirectory(const std::string& directory);

/// The file that a path leads to: that at the end of symbolic links, also when it isn't there yet. Replacing a link
/// itself would leave the file that it leads to as it was, to the surprise of whoever made it.
[[nodiscard]] std::string BehindLinks(const std::string& path);

/// Makes every directory that is missing, for this user alone.
[[nodiscard]] int MakeDirectories(const std::string& directory);

/// Writes all of the bytes.
[[nodiscard]] int WriteAll(int descriptor, std::string_view bytes);

/// A file beside another one that takes its place when it is complete, and is removed otherwise, whatever ends
/// the program. Only SIGKILL leaves it.
class DurableFile {
 public:
  /// Who may read the file once it is in its place.
  enum class Permissions {
    OfOwner,  ///< this user alone
    OfTarget  ///< those of the file that it replaces, and its group where the user may give it; without one
              ///< what the umask leaves
  };

  /// What must be at the target when the file takes its place.
  enum class Condition {
    Anything,
    AsBefore  ///< what was there: no file, or one that was not written to since
  };

  /// Creates it in the directory of the target, which need not be there itself, readable by its owner alone.
  explicit DurableFile(std::string target);
  /// Creates it in another directory, on the file system of the target.
  DurableFile(std::string target, const std::string& directory);

  /// Why it could not be created.
  [[nodiscard]] int error() const { return error_; }

  /// The file to write into, by its path.
  [[nodiscard]] const std::string& path() const { return path_; }

  /// Brings the content to the disk and puts the file in the target's place, by one step. The target is as it
  /// was after an error.
  /// @param before  what was at the target, for AsBefore: nothing fails with EEXIST when a file has come to be,
  ///                and a file that was written to with ESTALE
  [[nodiscard]] int Commit(Permissions permissions, Condition condition = Condition::Anything,
                           const std::optional<struct stat>& before = std::nullopt);

 private:
  std::string target_;
  std::string path_;
  int error_ = 0;
  std::optional<CleanUp> removal_;
};

/// Puts a text in the place of a file, for this user alone; through a link in that of the file that it leads
/// to. A signal waits until the new file is there, and leaves no half of it.
[[nodiscard]] int ReplaceDurably(const std::string& path, std::string_view text);

}  // namespace vtdirect_cli
