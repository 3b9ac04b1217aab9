#pragma once

#include <memory>
#include <optional>
#include <string>

#include "hosts/cli/failures/result.h"
#include "hosts/cli/work_folder/file_store.h"

namespace vtdirect_cli {

/// A directory whose files come from a folder of a server, with what is kept of them in `.vtdirect/`.
class WorkFolder {
 public:
  /// The work folder that a directory lies in; empty when it lies in none. Reads the disk only.
  [[nodiscard]] static std::string RootAbove(const std::string& directory);

  /// Whether a directory is a work folder whose making came to its end.
  [[nodiscard]] static bool IsMade(const std::string& directory);

  /// Opens the work folder that the current directory lies in. Makes no request.
  /// @return a failure outside of a work folder, for one that can't be read, and when the nickname in its
  ///         address leads to another server than the one that its files come from
  [[nodiscard]] static Result<std::unique_ptr<WorkFolder>> OpenHere();

  /// Makes a work folder of a directory that is there, and locks it. Makes no request.
  /// @param address  path of the folder on the server, with its closing "/"
  /// @return a failure also for one that is a work folder already, and while another process makes it one
  [[nodiscard]] static Result<std::unique_ptr<WorkFolder>> Create(const std::string& directory,
                                                                  const std::string& address);

  /// Keeps every other process from changing this work folder until the object goes, and clears away what a
  /// killed one has left: half-written files, and announcements, of which those that are true are kept.
  /// @return a failure when another process is at work in it
  [[nodiscard]] std::optional<Failure> Lock();

  /// Absolute path, without a closing "/".
  [[nodiscard]] const std::string& root() const { return root_; }
  [[nodiscard]] const std::string& address() const { return store_->address(); }
  [[nodiscard]] const std::string& server() const { return store_->server(); }
  [[nodiscard]] FileStore& store() { return *store_; }

  /// Where a file of the folder is on the disk.
  [[nodiscard]] std::string OnDisk(const std::string& path) const { return root_ + "/" + path; }
  /// The directory for files that are not complete yet.
  [[nodiscard]] std::string incoming() const { return root_ + "/.vtdirect/incoming"; }
  /// The path below the work folder of what a user calls `name` in the current directory; empty for what lies
  /// outside.
  [[nodiscard]] std::string PathOf(const std::string& name) const;

  /// The name of a file of the folder for a user: as the current directory has it when the object is of
  /// OpenHere, "../fork.lxz"; its path below the work folder otherwise.
  [[nodiscard]] std::string Shown(const std::string& path) const;

  ~WorkFolder();
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

 private:
  WorkFolder(std::string root, std::unique_ptr<FileStore> store)
      : root_(std::move(root)), store_(std::move(store)) {}
  [[nodiscard]] std::optional<Failure> TakeLock();
  void SettleAnnouncements();

  std::string root_;
  std::string here_;  // the current directory, below the root; empty for the root
  std::unique_ptr<FileStore> store_;
  int lock_ = -1;
};

/// The address that the work folder around the current directory was made from; empty when there is none.
[[nodiscard]] std::string AddressOfWorkFolderHere();

/// What is kept of a file of the work folder around the current directory, for a text that is no address and
/// names such a file; nothing for any other text. Makes no request.
[[nodiscard]] std::optional<FolderFile> FindWorkFile(const std::string& text);

/// The UID of the same.
[[nodiscard]] std::optional<std::string> UidOfWorkFile(const std::string& text);

/// What stands on the server for a name in the work folder around the current directory: the UID of the version that a
/// file came from, the path of the folder that a directory was made for. Makes no request.
/// @return the text itself when it is an address, and when it names nothing that came from the server
[[nodiscard]] std::string AddressOfWorkName(const std::string& text);

/// Whether a path of the disk is that of a file that came from the server of the work folder that it lies in. Makes
/// no request.
[[nodiscard]] bool IsPlaceOfWorkFile(const std::string& path);

/// The failure of who wants to make a work folder of one.
[[nodiscard]] Failure AlreadyMade(const std::string& directory);

/// The failure of a work folder's own database.
[[nodiscard]] Failure StoreFailure(const std::string& fault);

}  // namespace vtdirect_cli
