#include <sys/stat.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/failures/retrying.h"
#include "hosts/cli/files/target_file.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/pulling.h"

namespace vtdirect_cli {
namespace {

// The last step of the path, as it is called on a disk.
[[nodiscard]] std::string NameOfFolder(const std::string& address) {
  const std::string open = address.substr(0, address.size() - 1);
  return SafeFileName(open.substr(open.rfind('/') + 1));
}

// A directory of somebody's files is no place for a work folder. One that was not finished counts as empty.
[[nodiscard]] std::optional<Failure> RefusalOfDirectory(const std::string& directory) {
  if (WorkFolder::IsMade(directory)) return AlreadyMade(directory);
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
    if (entry.path().filename() == ".vtdirect") continue;
    return Failure{ExitCode::LocalFile, Printable(directory) + " is not empty; nothing was fetched",
                   "give another directory"};
  }
  return std::nullopt;
}

[[nodiscard]] std::optional<Failure> MakeDirectory(const std::string& directory) {
  if (mkdir(directory.c_str(), 0777) == 0 || errno == EEXIST) return std::nullopt;
  return Failure{ExitCode::LocalFile,
                 "cannot make the directory " + Printable(directory) + ": " + std::strerror(errno)};
}

// Products and such have the same folders on every server, whether they are there or not: only what is in them tells.
[[nodiscard]] bool IsOfNothing(const RemoteTree& tree) {
  const auto isMissing = [](const Failure& failure) { return failure.code == ExitCode::NotFound; };
  return tree.documents.empty() && tree.folders.empty() && !tree.failures.empty() &&
         std::all_of(tree.failures.begin(), tree.failures.end(), isMissing);
}

[[nodiscard]] ExitCode TellFailures(Host& host, const RemoteTree& tree) {
  ExitCode worst = ExitCode::Ok;
  for (const Failure& failure : tree.failures) worst = Worse(worst, host.output().Fail(failure));
  return worst;
}

ExitCode RunClone(Host& host, const Arguments& arguments) {
  const std::string address = WithClosingSlash(arguments.Text("PATH"));
  const auto effort = ReadEffort(arguments);
  if (!effort) return host.output().Fail(effort.failure());
  const auto kind = RequireAddress(address);
  if (!kind) return host.output().Fail(kind.failure());
  if (IsById(address, *kind)) return host.output().Fail(DiagnoseObjectAsDirectory(host, address));
  const std::string directory = arguments.Has("DIR") ? arguments.Text("DIR") : NameOfFolder(address);
  if (const auto failure = RefusalOfDirectory(directory)) return host.output().Fail(*failure);

  ForgetReasons();
  std::string server;
  static_cast<void>(VtDirectManager::GetLinkContext(address.c_str(), server));
  const RemoteTree tree = ReadRemoteTree(server, {"", address}, *effort);
  if (Interrupted()) return host.output().Fail(InterruptedFailure());
  // A directory is made only for a folder that is there.
  if (!tree.Knows("")) return host.output().Fail(DiagnoseDirectory(host, address, 0));
  if (IsOfNothing(tree)) return TellFailures(host, tree);
  if (IsDryRun(arguments)) return TellPull(host, nullptr, tree);
  if (const auto failure = MakeDirectory(directory)) return host.output().Fail(*failure);
  const auto created = WorkFolder::Create(directory, address);
  if (!created) return host.output().Fail(created.failure());
  return PullAll(host, **created, tree, *effort);
}

}  // namespace

CommandRow CloneCommand() {
  return {"clone",
          "Make a work folder of a folder on a server",
          "Fetches every document of the folder at PATH, and of all folders below it, into DIR: a work "
          "folder. Without DIR it is called as the folder is. It must be empty, or not be there.\n\n"
          "What each file came from is kept in DIR/.vtdirect. In DIR and below it, st, pull, commit, revert, "
          "diff and log take names of files, and so does every command in place of a document's address.\n\n"
          "A file is called as the document is in a path, with a dot in front and control bytes escaped as "
          "%hh. Of two documents with one name, the later one gets its number: \"fork%(0000100001).lxz\".\n\n"
          "A clone that fails or is interrupted leaves a whole work folder that has not all of the files "
          "yet: pull fetches the others.",
          {{"PATH", "A folder's path; see ADDRESSES."}, {"DIR", "A directory.", Count::AtMostOnce}},
          {ParallelOption(), RetriesOption(),
           DryRunOption("Say which files would be fetched, and make no directory.")},
          Requests::Some,
          RunClone,
          PullMembers()};
}

}  // namespace vtdirect_cli
