#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/files/state_file.h"

namespace vtdirect_cli {

/// A change on a server that was begun, and of which it is not known here how it ended.
struct JournalEntry {
  JournalEntry(std::string aStep, std::string anAddress, std::string aUid, std::string aFile = {},
               std::string aSum = {})
      : step(std::move(aStep)),
        address(std::move(anAddress)),
        uid(std::move(aUid)),
        file(std::move(aFile)),
        sha256(std::move(aSum)) {}

  std::string step;     ///< checkout, checkin, undo, create, iterate, store, xliff put or xliff publish
  std::string address;  ///< as it was given
  std::string uid;      ///< the document's or the working copy's; for create the path
  std::string file;     ///< the local file that is stored; empty without one
  std::string sha256;   ///< of its bytes
  /// The process that wrote it, so that one under way can be told from one that was lost. Filled in by Write.
  std::string writer;
  std::string since;  ///< UTC, as 2026-01-31T09:00:00Z. Filled in by Write.
};

/// What the journal holds of programs that have gone, and how much of those that are at work.
struct OpenChanges {
  std::vector<JournalEntry> entries;  ///< oldest first
  std::size_t underWay = 0;           ///< entries of processes that are at work
  std::size_t unreadable = 0;         ///< lines that this release does not understand
  std::string fault;                  ///< that there are such lines, for a reader; empty without any
};

/// The file beside the list of checkouts that holds each change from before it is sent until its answer is
/// in. Killed at whatever moment, the program leaves an entry of what it was about. None of the functions
/// makes a request. A line that can't be understood stays as it is.
class Journal {
 public:
  explicit Journal(const std::string& path = Location())
      : path_(path), file_(path, "vtdirect-journal 1", "journal") {}

  [[nodiscard]] static std::string Location();

  /// Writes an entry of this process. @return why it could not be written, or an empty text
  [[nodiscard]] std::string Write(JournalEntry& entry) const;

  /// Strikes an entry out. @return why that was not possible, or an empty text
  [[nodiscard]] std::string StrikeOut(const JournalEntry& entry) const;

  /// The entries whose process has gone.
  /// @return a failure for a file that can't be read
  [[nodiscard]] Result<OpenChanges> Open() const;

 private:
  std::string path_;
  StateFile file_;
};

}  // namespace vtdirect_cli
