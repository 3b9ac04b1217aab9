#pragma once

#include <optional>
#include <string>

#include "hosts/cli/program/host.h"
#include "hosts/cli/work_folder/comparison.h"

namespace vtdirect_cli {

/// What became of a file that was to be committed.
struct SendResult {
  bool sent = false;                 ///< stored and checked in, and kept as the version that it is now
  std::optional<Failure> failure{};  ///< what is on the server now and what to do next, when it was not
  FolderFile file{};                 ///< for one that was sent
};

/// Checks the document of a changed file out, unless this program has it checked out, stores the file, and
/// checks it in. A document whose newest version is not the one that the file was made from is a conflict:
/// nothing is sent then, and a checkout that was made for it is undone. Makes requests.
/// @param changed  with what is kept of the file
[[nodiscard]] SendResult SendFile(Host& host, WorkFolder& folder, const Comparison& changed);

/// The failure of a file whose document has another newest version than the one that it was made from.
/// @param name  of the file, for a user
[[nodiscard]] Failure ConflictOf(const std::string& name, const std::string& base, const std::string& newest);

}  // namespace vtdirect_cli
