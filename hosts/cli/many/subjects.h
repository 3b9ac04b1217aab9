#pragma once

#include <string>
#include <vector>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/work_folder/remote_tree.h"

namespace vtdirect_cli {

/// One thing that a command is to work on.
struct Subject {
  std::string address;       ///< as it was given, or the path of what a pattern has found
  bool isFolder = false;     ///< a pattern has found a folder; its path closes with "/"
  std::string uid = {};      ///< of what a pattern has found, when its listing tells it
  std::string version = {};  ///< with the UID
  std::string name = {};     ///< of what a pattern has found: what it is called on a disk
};

/// What the addresses of a command mean.
struct Subjects {
  std::vector<Subject> found;
  std::vector<Failure> failures;  ///< of the patterns that match nothing, and of folders that were not listed
};

/// What a pattern may find.
enum class Wanted { Documents, DocumentsAndFolders };

/// Whether an address is a path with "*" or "?" in its steps.
[[nodiscard]] bool IsPattern(const std::string& address);

/// The things that the addresses mean, in their order. An address that is no pattern means itself. The
/// steps of a pattern are matched with the listings, folder by folder, from the first step on that has a "*" or
/// "?"; what it finds comes by the bytes of its path. With a closing "/" it finds folders alone. What two patterns find
/// comes once. Makes requests for patterns alone.
[[nodiscard]] Subjects FindSubjects(const std::vector<std::string>& addresses, Wanted wanted, Effort effort);

/// Puts documents in the order of the bytes of their paths. The path of several documents leads to none of them, so
/// it is replaced by the UID of each, where that is known.
void SortByPath(std::vector<Subject>& found);

}  // namespace vtdirect_cli
