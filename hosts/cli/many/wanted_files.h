#pragma once

#include <string>
#include <vector>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/failure.h"
#include "hosts/cli/work_folder/remote_tree.h"

namespace vtdirect_cli {

/// A document that is to become a file.
struct WantedFile {
  std::string address;  ///< as it was given, or its path
  std::string uid;      ///< of its newest iteration, when a listing has told it
  std::string version;  ///< with the UID
  std::string place;    ///< the file, below the directory that all of them go to
};

/// All that a command is to fetch.
struct WantedFiles {
  std::vector<WantedFile> files;
  std::vector<std::string> folders;  ///< directories that are to be there, below that directory
  std::vector<Failure> failures;     ///< of what could not be found or listed
};

/// Finds what the addresses of `get` mean: documents, and with --recursive folders with all that is in them. Each
/// document gets a file of its own, whatever the others are called, and comes once. Makes requests for patterns,
/// for folders, and for addresses without a name.
[[nodiscard]] WantedFiles FindWantedFiles(const Arguments& arguments, Effort effort);

}  // namespace vtdirect_cli
