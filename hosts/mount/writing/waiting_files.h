#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "hosts/cli/storing/unstored_files.h"
#include "hosts/mount/writing/local_file.h"
#include "hosts/mount/writing/mounted.h"
#include "hosts/mount/writing/overlay.h"

namespace vtdirect_mount {

/// What the server does not have yet: the entries on the disk, by which it survives this process, and the
/// addresses of what could not be stored. Any thread. Makes no request.
class WaitingFiles {
 public:
  /// @param mounted  must outlive this, as the overlay must
  WaitingFiles(const Mounted& mounted, Overlay& overlay) : mounted_(mounted), overlay_(overlay) {}

  [[nodiscard]] const vtdirect_cli::UnstoredFiles& unstored() const { return unstored_; }

  /// Makes the directory, clears away what killed mounts have left of scratch files, and takes over what waits
  /// to be stored below an address.
  /// @return why that can't be done, or an empty text
  [[nodiscard]] std::string Prepare(const std::string& below);

  /// Writes the entry of a file, as changed when it was last changed.
  /// @param fault    why it is not stored
  /// @return an error number when that can't be written
  int Note(LocalFile& file, Written written, const std::string& fault);
  /// Removes the entry of a file; the content goes with the last who has it.
  void Strike(LocalFile& file);

  /// The same, unless it was changed since its store began. @return whether that was done
  [[nodiscard]] bool StrikeStored(LocalFile& file);
  /// The same for one that is to be stored no more, whoever still writes to it.
  void StrikeForGood(LocalFile& file);

  /// Forgets a file that its user has given up: its bytes are nowhere after that.
  void Drop(const std::string& address, const std::shared_ptr<LocalFile>& file);

  /// Lays a file over an address. What lay there before waits on the disk until the new one is safe there.
  void LayOver(const std::string& address, const std::shared_ptr<LocalFile>& file);
  /// Strikes what a file was laid over.
  void StrikeReplaced(const LocalFile& file);

  /// What could not be stored, by address.
  void Add(const std::string& address);
  void Remove(const std::string& address);
  [[nodiscard]] bool Has(const std::string& address) const;
  [[nodiscard]] std::set<std::string> Addresses() const;

 private:
  void ClearAway(const std::set<std::string>& entries) const;
  [[nodiscard]] static std::string WhyLeft(const vtdirect_cli::UnstoredFile& unstored,
                                           std::set<std::string>& taken);
  void TakeUp(const vtdirect_cli::UnstoredFile& unstored, std::set<std::string>& taken);

  const Mounted& mounted_;
  Overlay& overlay_;
  const vtdirect_cli::UnstoredFiles unstored_;
  mutable std::mutex mutex_;  // guards what follows
  std::set<std::string> addresses_;
  std::map<const LocalFile*, std::vector<std::shared_ptr<LocalFile>>> replaced_;  // by what lies over them
};

}  // namespace vtdirect_mount
