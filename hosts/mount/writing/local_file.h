#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "hosts/mount/cache/open_file.h"

namespace vtdirect_mount {

/// A file that programs write to. It is on this machine until it is stored; a scratch file for good. Its
/// content is removed with it, unless it waits to be stored.
class LocalFile {
 public:
  /// @param name  of its entry among the unstored files
  /// @param path  of its content
  LocalFile(std::string name, std::string path, int descriptor)
      : name_(std::move(name)), path_(std::move(path)), file_(descriptor) {}
  ~LocalFile();
  LocalFile(const LocalFile&) = delete;
  LocalFile& operator=(const LocalFile&) = delete;

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] const OpenFile& file() const { return file_; }
  [[nodiscard]] std::uint64_t size() const;

  /// How often it was changed; tells whether it was changed while it was stored.
  [[nodiscard]] std::uint64_t changes() const { return changes_; }
  /// Notes a change.
  /// @param isDue  whether it is to be stored at the next close. A file that was created or emptied when it
  ///               was opened is about to be written to: a shell closes it once before that.
  void NoteChange(bool isDue) {
    ++changes_;
    if (isDue) isDue_ = true;
  }
  [[nodiscard]] bool isDue() const { return isDue_; }
  /// Whether it holds what the server doesn't have.
  [[nodiscard]] bool isDirty() const { return stored_ != changes_; }
  void NoteStored(std::uint64_t changes) {
    stored_ = changes;
    isDue_ = isDirty();
  }
  /// Whether it is for this machine alone.
  [[nodiscard]] bool isScratch() const { return isScratch_; }
  void SetScratch(bool isScratch) { isScratch_ = isScratch; }
  /// Counts one more that has it open.
  void NoteOpened() { ++opened_; }
  /// Counts one less. @return how many are left
  std::size_t NoteClosed() { return --opened_; }
  /// Whether its content stays when this is destroyed.
  void Keep(bool keeps) { keeps_ = keeps; }

 private:
  const std::string name_;
  const std::string path_;
  const OpenFile file_;
  std::atomic<std::uint64_t> changes_{0};
  std::atomic<std::uint64_t> stored_{0};
  std::atomic<std::size_t> opened_{0};
  std::atomic<bool> isDue_{false};
  std::atomic<bool> isScratch_{false};
  std::atomic<bool> keeps_{false};
};

}  // namespace vtdirect_mount
