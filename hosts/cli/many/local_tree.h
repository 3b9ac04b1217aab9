#pragma once

#include <set>
#include <string>
#include <vector>

#include "hosts/cli/failures/failure.h"

namespace vtdirect_cli {

/// What is not sent of a directory, though nothing has failed.
struct LeftOut {
  std::string path;  ///< below the directory
  const char* why;   ///< to be followed by nothing: "it is a symbolic link"
};

/// The files of a directory, with all below it.
struct LocalTree {
  std::vector<std::string> files;  ///< paths below the directory, by their bytes
  std::set<std::string> folders;   ///< that have files in them or below them: "", "Frame/", "Frame/Old/"
  std::vector<LeftOut> leftOut;
  std::vector<Failure> failures;  ///< of the directories that can't be read
};

/// Looks for the files below a directory. Hidden files and directories are left out, as by a pattern, and with them
/// what vtdirect keeps of a work folder; so are symbolic links, which could lead anywhere, and what is no file.
/// Makes no request.
/// @param directory  without a closing "/", unless it is "/"
[[nodiscard]] LocalTree ReadLocalTree(const std::string& directory);

/// A path below a directory, as it is opened.
[[nodiscard]] std::string PathBelow(const std::string& directory, const std::string& path);

/// The folder part of a path, with its closing "/"; empty when it has none.
[[nodiscard]] std::string FolderPartOf(const std::string& path);

}  // namespace vtdirect_cli
