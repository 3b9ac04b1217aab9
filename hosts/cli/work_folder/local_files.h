#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hosts/cli/work_folder/file_store.h"

namespace vtdirect_cli {

/// What the disk tells of a path, without its bytes.
struct LocalFacts {
  enum class Kind { Nothing, File, Other };
  Kind kind = Kind::Nothing;  ///< Other: a directory, a link, a device
  std::uint64_t size = 0;
  std::int64_t time = 0;  ///< of the last change, in nanoseconds since 1970
  std::int64_t seen = 0;  ///< when the disk was asked
};

/// The time of a file that may be changed without getting another one: no file has it, so the file is read
/// whenever it is looked at.
inline constexpr std::int64_t unsureTime = -1;

/// What time it is, in nanoseconds since 1970.
[[nodiscard]] std::int64_t TimeNow();

/// The time to keep of a file whose bytes were read after its facts. A clock of files goes by ticks: of some
/// milliseconds on most disks, of two seconds on some. So a file that was changed just before it was looked at
/// could be changed once more at the same time, and unsureTime is to be kept of it.
/// @param time  of the file's last change
/// @param seen  when that was read
[[nodiscard]] std::int64_t TimeToKeep(std::int64_t time, std::int64_t seen);

/// Gives a file that nobody else knows of yet a time that no later change has: that of now, between two ticks.
/// @return the time to keep; unsureTime where the disk does not hold times so exactly
[[nodiscard]] std::int64_t StampFile(const std::string& path);

/// Whether a file of a work folder is a regular file, and each step of its path below the root a directory. A symbolic
/// link is neither: what it leads to came from elsewhere.
[[nodiscard]] bool IsReachedWithoutLink(const std::string& root, const std::string& path);

/// A symbolic link is not followed.
[[nodiscard]] LocalFacts FactsOf(const std::string& path);

/// Whether the bytes of a file are those that are kept of it. Reads the file when the sizes agree.
[[nodiscard]] bool HasBytesOf(const std::string& path, const LocalFacts& facts, const FolderFile& file);

/// How a file of a work folder differs from what is kept of it.
enum class LocalState { Missing, Same, Modified };

/// Looks at a file. Its bytes are read only where size or time differ from what is kept; when they are the
/// same all the same, the new time is kept (see TimeToKeep).
[[nodiscard]] LocalState StateOf(FileStore& store, const std::string& path, const FolderFile& file);

/// The same by its bytes, whatever its size and time are: who names a file may know that it was changed.
[[nodiscard]] LocalState StateByBytes(const std::string& path, const FolderFile& file);

/// The paths below a work folder of all that is no directory, sorted. What is kept in `.vtdirect` is left out,
/// and so are work folders within it. Links are not followed.
[[nodiscard]] std::vector<std::string> FilesBelow(const std::string& root);

/// Makes the directories that a file of a work folder lies in, one after the other.
/// @return 0, or an error number; ENOTDIR also for a symbolic link, which could lead anywhere
[[nodiscard]] int MakeFoldersFor(const std::string& root, const std::string& path);

}  // namespace vtdirect_cli
