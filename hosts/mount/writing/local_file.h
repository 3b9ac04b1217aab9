#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>

#include "hosts/mount/cache/facts_file.h"
#include "hosts/mount/cache/open_file.h"

namespace vtdirect_mount {

/// When a file that was changed is to be stored: at the next close, or only after one more change. A file that was
/// created or emptied when it was opened is about to be written to: a shell closes it once before that.
enum class Due { AtNextClose, AfterNextChange };

/// Whether a program had closed a file after its last change.
enum class Written { Whole, MaybeHalf };

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
  /// Where it lies, or lay last: it is stored there, whatever name the kernel has for it.
  [[nodiscard]] std::string address() const {
    const std::lock_guard lock(mutex_);
    return address_;
  }
  void SetAddress(const std::string& address) {
    const std::lock_guard lock(mutex_);
    address_ = address;
  }
  /// What it was written for, as in an entry: it is stored there and nowhere else.
  [[nodiscard]] std::string base() const {
    const std::lock_guard lock(mutex_);
    return base_;
  }
  void SetBase(const std::string& base) {
    const std::lock_guard lock(mutex_);
    base_ = base;
  }
  /// Notes that a document was made of it. Each further store makes an iteration, since it is checked out nowhere.
  /// @param uid  of the iteration; empty if that is not known
  void NoteCreated(const std::string& uid) {
    SetBase(uid);
    isCreated_ = true;
  }
  [[nodiscard]] bool isCreated() const { return isCreated_; }
  [[nodiscard]] std::uint64_t size() const;
  /// Its length, and when it was written, which is what a program has said if it has said so.
  [[nodiscard]] Facts facts() const;

  /// How often it was changed; tells whether it was changed while it was stored.
  [[nodiscard]] std::uint64_t changes() const { return changes_; }
  void NoteChange(Due due) {
    ++changes_;
    SetChanged(std::time(nullptr));
    if (due == Due::AtNextClose) isDue_ = true;
  }
  /// When it was last changed, by whichever mount.
  [[nodiscard]] std::time_t changed() const { return changed_; }
  void SetChanged(std::time_t changed) { changed_ = changed; }
  [[nodiscard]] bool isDue() const { return isDue_; }
  /// Whether it holds what the server doesn't have.
  [[nodiscard]] bool isDirty() const { return stored_ != changes_; }
  void NoteStored(std::uint64_t changes) {
    stored_ = changes;
    isDue_ = isDirty();
  }
  /// Notes that a store of it failed.
  /// @param changes  how often it had been changed then
  void NoteFailedStore(std::uint64_t changes) { failedStore_ = changes; }
  /// Whether the bytes that it holds now could not be stored.
  [[nodiscard]] bool couldNotBeStored() const { return isDirty() && failedStore_ == changes_; }
  /// Whether it holds what a store may still bring to the server.
  [[nodiscard]] bool isToBeStored() const {
    return isDirty() && !isScratch_ && !isReplaced_ && !couldNotBeStored();
  }
  /// Notes that a write failed with an error number, so that bytes of a program are missing in it. 0 notes that
  /// it was emptied, and is written anew.
  void NoteFailedWrite(int error) { failedWrite_ = error; }
  /// That error number; 0 when no bytes are missing.
  [[nodiscard]] int failedWrite() const { return failedWrite_; }
  /// Whether it is for this machine alone.
  [[nodiscard]] bool isScratch() const { return isScratch_; }
  void SetScratch(bool isScratch) { isScratch_ = isScratch; }
  /// The rights that a scratch file shows; its content is for the mount's user alone in any case.
  [[nodiscard]] unsigned mode() const { return mode_; }
  void SetMode(unsigned mode) { mode_ = mode; }
  /// Whether its entry says that a program had closed it, so that it may be stored after a crash.
  [[nodiscard]] bool isListedWhole() const { return isListedWhole_; }
  void NoteListed(Written written) { isListedWhole_ = written == Written::Whole; }
  /// Counts one more that has it open for writing.
  void NoteWriter() { ++writers_; }
  /// Counts one less. @return whether that was the last
  bool NoteWriterGone() { return --writers_ == 0; }
  /// Whether somebody has it open for writing, so that it may be half.
  [[nodiscard]] bool hasWriters() const { return writers_ != 0; }
  [[nodiscard]] std::size_t writers() const { return writers_; }
  /// Whether a newer file has its address, so that it must not be stored there.
  [[nodiscard]] bool isReplaced() const { return isReplaced_; }
  void NoteReplaced() { isReplaced_ = true; }
  /// Held while its entry is written or struck, so that each goes by what the other did. Never over a request.
  [[nodiscard]] std::unique_lock<std::mutex> LockEntry() { return std::unique_lock(entryMutex_); }
  /// Lets its content stay when this is destroyed.
  void KeepContent() { keeps_ = true; }
  /// Lets its content go when this is destroyed, as at first.
  void DropContent() { keeps_ = false; }
  /// Makes it this process's own until it is closed or the process ends, however that ends.
  /// @return false when it is another's
  [[nodiscard]] bool Claim() const;

 private:
  const std::string name_;
  const std::string path_;
  const OpenFile file_;
  std::mutex entryMutex_;
  mutable std::mutex mutex_;  // guards what follows
  std::string address_;
  std::string base_;

  std::atomic<std::uint64_t> changes_{0};
  std::atomic<std::time_t> changed_{0};
  std::atomic<std::uint64_t> stored_{0};
  std::atomic<std::uint64_t> failedStore_{0};
  std::atomic<unsigned> mode_{0644U};
  std::atomic<std::size_t> writers_{0};
  std::atomic<int> failedWrite_{0};
  std::atomic<bool> isDue_{false};
  std::atomic<bool> isCreated_{false};
  std::atomic<bool> isScratch_{false};
  std::atomic<bool> isListedWhole_{false};
  std::atomic<bool> isReplaced_{false};
  std::atomic<bool> keeps_{false};
};

}  // namespace vtdirect_mount
