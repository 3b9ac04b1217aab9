#pragma once

#include <string>

namespace vtdirect_cli {

/// Keeps other runs of the program from changing a state file. What it locks is a file of its own beside it,
/// since the state file itself is replaced. Makes the directory, for this user alone.
class StateFileLock {
 public:
  /// Waits some seconds for another run.
  /// @param fault  why there is no lock, or an empty text
  StateFileLock(const std::string& path, std::string& fault);
  ~StateFileLock();
  StateFileLock(const StateFileLock&) = delete;
  StateFileLock& operator=(const StateFileLock&) = delete;

 private:
  int descriptor_ = -1;
};

/// Replaces a state file as a whole, for this user alone; through a link the file that it leads to. To be
/// called under its lock.
/// @return why the old file still stands, or an empty text
[[nodiscard]] std::string ReplaceStateFile(const std::string& path, const std::string& text);

}  // namespace vtdirect_cli
