#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/work_folder/local_files.h"
#include "hosts/cli/work_folder/remote_tree.h"
#include "hosts/cli/work_folder/work_folder.h"

namespace vtdirect_cli {

/// How a file of a work folder differs from the server.
enum class FileState {
  Same,      ///< what the server has
  Modified,  ///< changed here
  Newer,     ///< the server has a newer version
  Both,      ///< changed here, and the server has a newer version
  Missing,   ///< deleted here
  New,       ///< on the server, and not here yet
  InTheWay,  ///< on the server, and here a file that did not come from there
  Unknown,   ///< here, and not on the server
  Gone,      ///< it came from the server, which does not have it any more
};

/// "modified", "in-the-way".
[[nodiscard]] const char* WordOf(FileState state);

/// One file, here or there.
struct Comparison {
  std::string path;  ///< below the work folder
  FileState state = FileState::Same;
  bool isModified = false;                   ///< changed here, whatever the server has
  std::optional<FolderFile> file{};          ///< what is kept of it
  std::optional<RemoteDocument> document{};  ///< what the server shows; nothing also when that is not known
};

/// What is known of the files here.
struct LocalSide {
  KeptFiles kept;
  std::map<std::string, LocalState> states;  ///< of those that are kept
  std::vector<std::string> files;            ///< all that are there
};

/// What is kept of the files of a work folder, by their paths. Makes no request.
/// @return a failure if it can't be read
[[nodiscard]] Result<KeptFiles> ReadKept(WorkFolder& folder);

/// Looks at the files of a work folder. Makes no request.
/// @return a failure if what is kept can't be read
[[nodiscard]] Result<LocalSide> ReadLocalSide(WorkFolder& folder);

/// Compares both sides, by the order of the paths. Of what the server could not be asked for, the local side
/// alone counts. Makes no request.
[[nodiscard]] std::vector<Comparison> Compare(const LocalSide& local, const RemoteTree& tree);

}  // namespace vtdirect_cli
