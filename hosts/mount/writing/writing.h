#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "hosts/mount/requests/task_pool.h"
#include "hosts/mount/writing/command_runner.h"
#include "hosts/mount/writing/document_checkouts.h"
#include "hosts/mount/writing/local_files.h"
#include "hosts/mount/writing/mounted.h"
#include "hosts/mount/writing/overlay.h"
#include "hosts/mount/writing/renames.h"
#include "hosts/mount/writing/retries.h"
#include "hosts/mount/writing/scratch_names.h"
#include "hosts/mount/writing/stores.h"
#include "hosts/mount/writing/waiting_files.h"

namespace vtdirect_mount {

/// What a mount does with what programs write. A file is written to on this machine and stored when it is
/// closed. What can't be stored waits on the disk, is tried again, and waits for the next mount when this one
/// ends. Any thread; the functions that store, edit or set aside block and make requests.
class Writing {
 public:
  struct Settings {
    ScratchNames scratch;
    bool autoCheckout = false;
    std::vector<std::string> command;  ///< vtdirect, with the options of every call
    std::string directory;             ///< where it runs
  };
  Writing(Settings settings, Mounted mounted);
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;

  /// Makes the directory, clears away what killed mounts have left of scratch files, and takes over what waits
  /// to be stored below an address.
  /// @return why that can't be done, or an empty text
  [[nodiscard]] std::string Prepare(const std::string& below);

  [[nodiscard]] Overlay& overlay() { return overlay_; }
  /// The UID by which a document is read: that of its working copy when it is checked out here.
  [[nodiscard]] std::string ReadBy(const std::string& uid) { return checkouts_.ReadBy(uid); }
  [[nodiscard]] bool IsCheckedOut(const std::string& uid) { return checkouts_.Has(uid); }

  /// A new file, opened to be written to.
  /// @param program  the name of the process that makes it
  [[nodiscard]] Writable Create(const std::string& address, const std::string& program);
  /// A file that can be opened to be written to without a question: a scratch file, or what is not stored yet.
  /// Nothing for any other, which `Edit` opens. Makes no request.
  [[nodiscard]] std::shared_ptr<LocalFile> EditKnown(const std::string& address);
  /// A document, opened to be written to: EACCES unless it is checked out here.
  /// @param keepsContent  whether the file begins with the document's content
  [[nodiscard]] Writable Edit(const std::string& address, bool keepsContent);
  /// Takes back that a file was opened to be written to, since no program has got it. What other programs have left
  /// to this one is stored.
  void LetGo(const std::shared_ptr<LocalFile>& file);
  /// Notes that a file is about to be changed, so that a crash is told of.
  /// @return an error number when that can't be noted; then it must not be changed
  [[nodiscard]] int NoteChange(LocalFile& file, Due due);
  /// What is written anew to a waiting file is written for; empty when that can't be told. May make requests.
  [[nodiscard]] std::string BaseNow(const std::string& address);
  [[nodiscard]] bool IsWaiting(const std::string& address) const { return waiting_.Has(address); }
  /// Empties a file that a program is about to write anew.
  /// @param base  what it is written for from now on; empty for what it was written for before
  /// @return an error number
  [[nodiscard]] int Empty(const std::shared_ptr<LocalFile>& file, const std::string& base);
  /// Hands over a task that stores or renames: one at a time, in the order in which they come.
  void Post(TaskPool::Task task) { tasks_.Post(std::move(task)); }
  /// A file that was written to was closed for good, which nobody can be told the end of. What is new in it and was
  /// not stored yet is stored, by the next mount if this one is killed first. One that holds nothing new goes with
  /// the last that wrote to it, so that the tree shows the document as the server has it; who reads it keeps it.
  void Close(const std::shared_ptr<LocalFile>& file);
  /// Tries again to store what waits, and not only after a while.
  void RetryNow() { retries_.Now(); }
  /// Ends what is under way, and waits for it so long. @return whether all has ended
  [[nodiscard]] bool StopWithin(std::chrono::milliseconds most) { return tasks_.StopWithin(most); }

  // To be called by tasks of Post alone.

  /// Stores what was changed; scratch files are stored nowhere.
  /// @return EIO when it waits now; the error number of a write that failed, since half a file is never stored
  [[nodiscard]] int Store(const std::shared_ptr<LocalFile>& file) { return stores_.Store(file); }
  /// Gives a file another name, and stores it when that is a document's. @return an error number
  [[nodiscard]] int Rename(const std::string& from, const std::string& to) {
    return renames_.Rename(from, to);
  }
  /// Removes a file of this machine. @return EPERM for a document
  [[nodiscard]] int Remove(const std::string& address) { return renames_.Remove(address); }

 private:
  void NoteWhole(LocalFile& file);
  void StoreLeft(const std::shared_ptr<LocalFile>& file);
  void PostStore(const std::shared_ptr<LocalFile>& file);
  void BeginRetry();
  void RetryOnce();

  const Settings settings_;
  const Mounted mounted_;
  const CommandRunner runner_;
  Overlay overlay_;
  WaitingFiles waiting_;
  LocalFiles files_;
  DocumentCheckouts checkouts_;
  Stores stores_;
  Renames renames_;
  TaskPool tasks_{1};
  Retries retries_;
};

}  // namespace vtdirect_mount
