#include "hosts/cli/work_folder/work_files.h"

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Failure NotOfServer(const WorkFolder& folder, const std::string& name) {
  const std::string path = folder.PathOf(name);
  const bool isHere = !path.empty() && FactsOf(folder.OnDisk(path)).kind == LocalFacts::Kind::File;
  return {ExitCode::Usage,
          Printable(name) + " did not come from the server of this work folder; nothing was done",
          isHere ? "\"vtdirect put " + QuotedForShell(name) + " ADDRESS\" creates a document of it"
                 : "vtdirect st --all shows the files that did"};
}

}  // namespace

Result<std::vector<FolderFile>> FilesNamed(const WorkFolder& folder, const KeptFiles& kept,
                                           const std::vector<std::string>& names) {
  std::vector<FolderFile> files;
  for (const std::string& name : names) {
    const auto file = kept.find(folder.PathOf(name));
    if (file == kept.end()) {
      return NotOfServer(folder, name);
    }
    files.push_back(file->second);
  }
  return files;
}

std::vector<FolderFile> ChangedFiles(const LocalSide& side) {
  std::vector<FolderFile> files;
  for (const auto& [path, file] : side.kept) {
    if (side.states.at(path) == LocalState::Modified) files.push_back(file);
  }
  return files;
}

ExitCode WorkOnNamedFiles(Host& host, const Arguments& arguments, Others others, const WorkOnFile& work) {
  const auto opened = WorkFolder::OpenHere();
  if (!opened) return host.output().Fail(opened.failure());
  WorkFolder& folder = **opened;
  if (others == Others::MustWait) {
    if (const auto locked = folder.Lock()) return host.output().Fail(*locked);
  }
  const auto kept = ReadKept(folder);
  if (!kept) return host.output().Fail(kept.failure());
  const auto named = FilesNamed(folder, *kept, arguments.All("FILE"));
  if (!named) return host.output().Fail(named.failure());
  ForgetReasons();
  ExitCode worst = ExitCode::Ok;
  for (const FolderFile& file : *named) {
    if (Interrupted()) return host.output().Fail(InterruptedFailure());
    worst = Worse(worst, work(folder, file));
  }
  return worst;
}

Result<RemoteVersions> VersionsOf(const std::string& server, const FolderFile& file) {
  const RemoteTree tree =
      ReadRemoteFolders(server, {FolderOfDocument(file.path, file.address)}, 1, {{file.path, file}});
  const auto found = tree.documents.find(file.path);
  if (found == tree.documents.end()) {
    const bool isKnown = tree.Knows(file.path) || tree.failures.empty();
    if (!isKnown) return tree.failures.front();
    return Failure{ExitCode::NotFound, Printable(file.path) + " is not on the server any more"};
  }
  const RemoteDocument& document = found->second;
  RemoteVersions history;
  history.isComplete = !document.versions.empty();
  history.versions = document.versions;
  if (history.isComplete) return history;
  history.versions.push_back({document.version, document.uid});
  if (!AreSameUid(document.uid, file.uid)) history.versions.push_back({file.version, file.uid});
  return history;
}

}  // namespace vtdirect_cli
