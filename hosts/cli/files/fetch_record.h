#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vtdirect_cli {

/// What a file has to do with a working copy, which goes with all that is in it when its checkout is undone.
enum class CopyUse {
  None,     ///< its bytes are in an iteration, which stays
  Fetched,  ///< its bytes came from a working copy
  Stored    ///< its bytes were stored in a working copy
};

/// What is known of a local file whose bytes the server has too: `get` saved it, or `put` stored it.
struct FetchRecord {
  std::string file;     ///< absolute path
  std::string address;  ///< as it was given
  std::string uid;      ///< of what has the bytes: the working copy's as long as it is in one
  std::string version;  ///< empty when the server did not tell it
  std::uint64_t size = 0;
  std::string sha256;
  CopyUse copyUse = CopyUse::None;
};

/// The records, one small file each, named after the path of the file that it tells of, in
/// $XDG_STATE_HOME/vtdirect/fetched or ~/.local/state/vtdirect/fetched. To remove one loses nothing: its file
/// counts as one that was never saved. None of the functions makes a request.
class FetchRecords {
 public:
  explicit FetchRecords(std::string directory = Location()) : directory_(std::move(directory)) {}

  [[nodiscard]] static std::string Location();

  /// What is recorded of the file at this path; nothing when there is no record that can be understood.
  [[nodiscard]] std::optional<FetchRecord> Find(const std::string& path) const;

  /// Keeps a record of the file at `path`, in place of what is recorded of it.
  /// @param record  with size and SHA-256; its `file` is filled in
  /// @return why it could not be recorded, or an empty text
  [[nodiscard]] std::string Keep(const std::string& path, FetchRecord record) const;
  /// Drops the record of a file that is about to go.
  void Forget(const std::string& path) const;

  /// The records whose bytes are in this working copy, of whatever file.
  [[nodiscard]] std::vector<FetchRecord> OfWorkingCopy(const std::string& workingCopy) const;

 private:
  std::string directory_;
};

/// A record with size and SHA-256 of a file alone; nothing if it can't be read.
[[nodiscard]] std::optional<FetchRecord> Measure(const std::string& path);

/// Whether the file at this path has the bytes that are recorded.
[[nodiscard]] bool IsAsRecorded(const std::string& path, const FetchRecord& record);

}  // namespace vtdirect_cli
