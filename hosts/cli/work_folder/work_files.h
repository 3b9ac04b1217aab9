#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/host.h"
#include "hosts/cli/work_folder/comparison.h"

namespace vtdirect_cli {

/// Finds what is kept of each file of a work folder that a user has named, by its name as one in the current
/// directory has it. Makes no request.
/// @return a failure for a name that no such file has
[[nodiscard]] Result<std::vector<FolderFile>> FilesNamed(const WorkFolder& folder, const LocalSide& side,
                                                         const std::vector<std::string>& names);

/// What is done with one file that a user has named, and how it went.
using DoWithFile = std::function<ExitCode(WorkFolder& folder, const FolderFile& file, LocalState state)>;

enum class FolderUse { Reads, Changes };

/// Opens the work folder around the current directory, under its lock for what changes it, and does something with
/// each of the files that the operand FILE names. Makes no request of its own.
/// @return the worst of how it went
[[nodiscard]] ExitCode ForEachNamedFile(Host& host, const Arguments& arguments, FolderUse use,
                                        const DoWithFile& doWithFile);

/// The versions of a file's document, the newest first.
struct RemoteVersions {
  std::vector<RemoteVersion> versions;
  bool isComplete = false;  ///< whether these are all of them
};

/// Reads the versions out of the listing of the document's folder; of a server that does not list them the
/// newest and the file's own. Makes requests.
[[nodiscard]] Result<RemoteVersions> VersionsOf(const std::string& server, const FolderFile& file);

}  // namespace vtdirect_cli
