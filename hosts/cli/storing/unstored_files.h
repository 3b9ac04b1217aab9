#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/failures/failure.h"

namespace vtdirect_cli {

/// A file that a program has written in a mount and that the server does not have yet.
struct UnstoredFile {
  std::string name;         ///< of the entry, without an ending
  std::string address;      ///< where it belongs
  std::string since;        ///< UTC, as 2026-01-31T09:00:00Z
  bool isWhole = false;     ///< whether the program had closed it
  std::string fault;        ///< why the last try failed; empty before the first
  std::string server = {};  ///< URL of the server that it was written for; empty if that is not known
  /// UID of the working copy that it was written for, or of the iteration that was made of it, or the word below;
  /// empty if that is not known.
  std::string base = {};
};

/// The base of a file that was written where no document was.
inline constexpr const char* baseOfNewDocument = "new";

/// Where such files wait: each is a content, NAME.content, and what is known of it, NAME.entry. What is there
/// survives the end of the process and of the machine. None of the functions makes a request.
class UnstoredFiles {
 public:
  explicit UnstoredFiles(std::string directory = Location()) : directory_(std::move(directory)) {}
  /// $XDG_STATE_HOME/vtdirect/unstored, else ~/.local/state/vtdirect/unstored; empty without a home.
  [[nodiscard]] static std::string Location();

  [[nodiscard]] const std::string& directory() const { return directory_; }
  [[nodiscard]] std::string ContentOf(const std::string& name) const {
    return directory_ + "/" + name + ".content";
  }

  /// Writes what is known of a file; the content is the caller's.
  /// @return the error number of what failed; 0 for none
  [[nodiscard]] int Write(const UnstoredFile& file) const;
  /// What came of giving a file up.
  enum class Discarded {
    Gone,     ///< entry and content are removed
    Asked,    ///< a mount has the file; it drops it when it tries to store it again
    Written,  ///< a program is writing to it in a mount; nothing was done
    Failed    ///< it could not be removed; errno says why
  };
  /// Gives a file up.
  /// @param isDryRun  whether to tell only what would come of it
  [[nodiscard]] Discarded Discard(const UnstoredFile& file, bool isDryRun) const;
  /// Whether the mount that has a file is asked to drop it.
  [[nodiscard]] bool IsToBeDropped(const std::string& name) const;
  /// Takes that back, since the file is being written anew.
  void KeepAfterAll(const std::string& name) const;

  /// Removes an entry, and not the content.
  void Strike(const std::string& name) const;
  /// What is there.
  struct Listing {
    std::vector<UnstoredFile> files;
    bool isComplete = true;  ///< false when the directory could not be read to its end
    int error = 0;           ///< its error number, of ENOENT too
  };
  /// All that is there, by their names. An entry that can't be read is given with a fault that says so.
  [[nodiscard]] Listing List() const;
  /// Why there may be more than a listing has; nothing for a complete one, and if there is no directory.
  [[nodiscard]] std::optional<Failure> FailureOf(const Listing& listing) const;
  /// The files of `List`, also when it is not complete.
  [[nodiscard]] std::vector<UnstoredFile> All() const { return List().files; }

 private:
  [[nodiscard]] Discarded WhatDiscardingDoes(const UnstoredFile& file, int descriptor) const;
  [[nodiscard]] int Ask(const std::string& name) const;
  [[nodiscard]] int Remove(const std::string& name) const;

  std::string directory_;
};

}  // namespace vtdirect_cli
