#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <list>
#include <string>

#include "export.h"

/// Paths and files. Nothing here makes a request; everything may be called from any thread.
namespace du {

/// Takes a path apart and puts one together. A value class.
class VTDIRECT_API FileSpec {
 public:
  FileSpec();
  /// Splits at the last "/". A null path counts as empty.
  explicit FileSpec(const char* path);
  /// Splits at the last "/".
  explicit FileSpec(const std::string& path);

  /// Sets the directory.
  void SetLocation(const std::string& directory);
  /// Sets the file name with its extension.
  void SetFile(const std::string& name);
  /// Sets a directory path alone and splits it into its components; empty components don't count.
  void SetDirPath(const std::string& path);

  /// The number of the directory's components.
  [[nodiscard]] std::size_t DirCount() const;
  /// The first component. Valid until the directory is set.
  [[nodiscard]] std::list<std::string>::const_iterator DirBegin() const;
  /// The end of the components.
  [[nodiscard]] std::list<std::string>::const_iterator DirEnd() const;

  /// Gives the file name with its extension; false when there is none.
  bool GetFile(std::string* name) const;
  /// Gives the whole path; false when it is empty.
  bool GetFileSpec(std::string* path) const;

 private:
  bool absolute_ = false;
  std::list<std::string> directories_;
  std::string file_;
};

namespace FileSystem {

/// The directory for temporary files, without a closing "/". The argument is always true.
[[nodiscard]] VTDIRECT_API std::string GetTempDir(bool);

/// Creates a new empty file with a unique name, exclusively and readable by its owner alone.
/// @param directory  where; null means the directory for temporary files
/// @return its path, or the empty text when it cannot be created
[[nodiscard]] VTDIRECT_API std::string MkTempFile(const char* directory, const char* stem,
                                                  const char* extension);

/// Creates a new directory under the one for temporary files, for its owner alone.
/// @return its path, or the empty text when it cannot be created
[[nodiscard]] VTDIRECT_API std::string MkTempDir(const char* stem);

/// Removes a file. -1 on failure, with `errno` set. The flag is always false.
VTDIRECT_API int Unlink(const char* path, bool);

/// Removes a directory with its content; symbolic links in it are removed and not followed. False on failure.
VTDIRECT_API bool DeletePath(const std::string& path, bool);

/// `fopen`, with null for a null or empty path.
[[nodiscard]] VTDIRECT_API std::FILE* lxfopen(const char* path, const char* mode);

/// Asks the file system in one go for the space of the `bytes` bytes that are going to be appended to a file;
/// without that it looks for space again with each piece that is written. A hint: the file's length and
/// position stay as they are, and where the space can't be had, as on a disk that hasn't enough, on a pipe or
/// on a file system that knows nothing of it, nothing changes.
///
/// The one operation that a platform may leave out: the library then writes without asking.
/// @param file    open for writing, with nothing in its buffer
/// @param length  the bytes that it holds
VTDIRECT_API void ReserveSpace(std::FILE* file, std::uint64_t length, std::uint64_t bytes);

}  // namespace FileSystem
}  // namespace du
