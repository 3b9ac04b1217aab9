#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What all files have in common that must be whole or not there: the steps by which one takes another's
/// place. Errors are error numbers; 0 is none.
namespace vtdirect_cli {

/// The directory that a path names a file in; "." for a path without one.
[[nodiscard]] std::string DirectoryOf(const std::string& path);

/// The file that a path leads to: that behind symbolic links, also when it isn't there yet. Replacing a link
/// itself would leave the file that it leads to as it was, to the surprise of whoever made it.
[[nodiscard]] std::string BehindLinks(const std::string& path);

/// Makes every directory that is missing, for this user alone.
[[nodiscard]] int MakeDirectories(const std::string& directory);

/// Writes all of the bytes.
[[nodiscard]] int WriteAll(int descriptor, std::string_view bytes);

/// Brings a directory's own entries to the disk, or a crash could bring back the old file. Some filesystems
/// can't do this, which takes nothing from the file itself.
void SyncDirectory(const std::string& directory);

/// Puts a text in the place of a file, for this user alone: a new file beside it is brought to the disk and
/// renamed. A signal waits until the new file is there, and leaves no half of it.
[[nodiscard]] int ReplaceDurably(const std::string& path, std::string_view text);

}  // namespace vtdirect_cli
