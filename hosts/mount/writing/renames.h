#pragma once

#include <memory>
#include <string>

#include "hosts/mount/writing/document_checkouts.h"
#include "hosts/mount/writing/local_files.h"
#include "hosts/mount/writing/mounted.h"
#include "hosts/mount/writing/overlay.h"
#include "hosts/mount/writing/scratch_names.h"
#include "hosts/mount/writing/stores.h"
#include "hosts/mount/writing/waiting_files.h"

namespace vtdirect_mount {

/// What renames deal with; all of it outlives them.
struct RenameParts {
  const Mounted& mounted;
  const ScratchNames& scratch;
  LocalFiles& files;
  DocumentCheckouts& checkouts;
  WaitingFiles& waiting;
  Overlay& overlay;
  Stores& stores;
};

/// Renames and removes files of this machine, by which programs save what they have written. One thread at a
/// time. Makes requests, and blocks.
class Renames {
 public:
  explicit Renames(const RenameParts& parts) : parts_(parts) {}

  /// Gives a file another name, and stores it when that is a document's. @return an error number
  [[nodiscard]] int Rename(const std::string& from, const std::string& to);
  /// Removes a file of this machine. @return EPERM for a document
  [[nodiscard]] int Remove(const std::string& address);

 private:
  /// Whether a file is for this machine alone.
  struct Stay {
    int error = 0;  ///< why that can't be told; 0 when it can
    bool isHere = false;
  };
  [[nodiscard]] Stay StayOf(const std::string& address) const;
  [[nodiscard]] Writable CopyOf(const std::string& document);
  [[nodiscard]] int SetAside(const std::string& document, const std::string& backup);
  [[nodiscard]] int MoveOnto(const std::string& from, const std::string& to,
                             const std::shared_ptr<LocalFile>& file);

  const RenameParts parts_;
};

}  // namespace vtdirect_mount
