#pragma once

#include <functional>
#include <string>
#include <vector>

#include "hosts/cli/program/host.h"
#include "hosts/cli/work_folder/comparison.h"

namespace vtdirect_cli {

/// Finds what is kept of each file of a work folder that a user has named, by its name as one in the current
/// directory has it. Makes no request.
/// @return a failure for a name that no such file has
[[nodiscard]] Result<std::vector<FolderFile>> FilesNamed(const WorkFolder& folder, const KeptFiles& kept,
                                                         const std::vector<std::string>& names);

/// What is kept of each file that was changed here, by the bytes of their paths. Makes no request.
[[nodiscard]] std::vector<FolderFile> ChangedFiles(const LocalSide& side);

/// Whether others may work in a work folder meanwhile.
enum class Others { MayWork, MustWait };

/// Works on one file of a work folder.
using WorkOnFile = std::function<ExitCode(WorkFolder& folder, const FolderFile& file)>;

/// Works on each file that the user has named as FILE, one after the other, in the work folder around the current
/// directory. Makes the requests of the work.
/// @return the worst of its exit statuses, or that of a failure that let no work begin, which is told then
[[nodiscard]] ExitCode WorkOnNamedFiles(Host& host, const Arguments& arguments, Others others,
                                        const WorkOnFile& work);

/// The versions of a file's document, the newest first.
struct RemoteVersions {
  std::vector<RemoteVersion> versions;
  bool isComplete = false;  ///< whether these are all of them
};

/// Reads the versions out of the listing of the document's folder; of a server that does not list them the
/// newest and the file's own. Makes requests.
[[nodiscard]] Result<RemoteVersions> VersionsOf(const std::string& server, const FolderFile& file);

}  // namespace vtdirect_cli
