#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "hosts/cli/storing/unstored_files.h"
#include "hosts/mount/writing/local_file.h"

namespace vtdirect_mount {

/// A file to write to, or why there is none.
struct Writable {
  int error = 0;
  std::shared_ptr<LocalFile> file = nullptr;
};

/// Makes the files that programs write to, in the directory of what is not stored. Any thread.
class LocalFiles {
 public:
  /// @param unstored  where they are; must outlive this
  explicit LocalFiles(const vtdirect_cli::UnstoredFiles& unstored) : unstored_(unstored) {}

  /// An empty file. Makes no request.
  [[nodiscard]] Writable MakeEmpty();
  /// A file with the content of a document. Makes requests, and blocks.
  [[nodiscard]] Writable MakeOf(const std::string& uid);

 private:
  [[nodiscard]] std::string NewName();
  [[nodiscard]] Writable Open(const std::string& name, int flags) const;

  const vtdirect_cli::UnstoredFiles& unstored_;
  std::atomic<std::uint64_t> next_{0};
};

/// Whether two files hold the same bytes; false when one can't be read.
[[nodiscard]] bool HaveSameBytes(const LocalFile& one, const LocalFile& other);

/// Copies all bytes of a file into an empty one. @return whether that was done
[[nodiscard]] bool CopyBytes(const LocalFile& from, const LocalFile& to);

}  // namespace vtdirect_mount
