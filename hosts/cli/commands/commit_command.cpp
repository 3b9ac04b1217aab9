#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/many/batch.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/fetching.h"
#include "hosts/cli/work_folder/pulling.h"
#include "hosts/cli/work_folder/sending.h"
#include "hosts/cli/work_folder/work_files.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::vector<RemoteFolder> FoldersOf(const std::vector<FolderFile>& files) {
  std::map<std::string, RemoteFolder> folders;
  for (const FolderFile& file : files) {
    const RemoteFolder folder = FolderOfDocument(file.path, file.address);
    folders.emplace(folder.path, folder);
  }
  std::vector<RemoteFolder> sorted;
  for (const auto& [path, folder] : folders) sorted.push_back(folder);
  return sorted;
}

void Show(Host& host, const WorkFolder& folder, const std::string& action, const FolderFile& file) {
  host.output().Row({{"action", action}, {"version", file.version}, {"file", folder.Shown(file.path)}},
                    {{"action", action},
                     {"file", file.path},
                     {"path", file.address},
                     {"uid", file.uid},
                     {"version", file.version},
                     {"bytes", file.size}});
  static_cast<void>(host.output().Flush());
}

// A file that differs from what is kept of it may be what the server has: a commit whose end was not kept.
[[nodiscard]] ExitCode CommitOverNewer(Host& host, WorkFolder& folder, const Comparison& file) {
  const FetchResult known = RecogniseFile(folder, file);
  if (known.end == FetchResult::End::Known) {
    Show(host, folder, "known", known.file);
    return ExitCode::Ok;
  }
  if (known.failure) return host.output().Fail(*known.failure);
  return host.output().Fail(ConflictOf(folder.Shown(file.path), file.file->version, file.document->version));
}

// A commit without names takes what differs for changed, and what a link leads to is no change of this file.
[[nodiscard]] std::optional<Failure> RefusalOfLink(const WorkFolder& folder, const std::string& path) {
  if (IsReachedWithoutLink(folder.root(), path)) return std::nullopt;
  return Failure{
      ExitCode::LocalFile,
      Printable(folder.Shown(path)) +
          " is no regular file, or is reached by a symbolic link; nothing was sent",
      "put the file itself in its place; without the link, vtdirect pull brings it back as it came"};
}

void ShowWouldCommit(Host& host, const WorkFolder& folder, FolderFile file) {
  file.size = FactsOf(folder.OnDisk(file.path)).size;
  Show(host, folder, "would-commit", file);
}

[[nodiscard]] ExitCode CommitOne(Host& host, WorkFolder& folder, const Comparison& file, bool dryRun) {
  switch (file.state) {
    case FileState::Modified: {
      if (!file.document) break;
      if (const auto refusal = RefusalOfLink(folder, file.path)) return host.output().Fail(*refusal);
      if (dryRun) {
        ShowWouldCommit(host, folder, *file.file);
        return ExitCode::Ok;
      }
      const SendResult result = SendFile(host, folder, file);
      if (result.sent) Show(host, folder, "committed", result.file);
      if (result.sent) return ExitCode::Ok;
      // What a signal leaves has been told with it.
      if (result.failure->code == ExitCode::Interrupted) return ExitCode::Interrupted;
      return host.output().Fail(*result.failure);
    }
    case FileState::Both:
      return CommitOverNewer(host, folder, file);
    case FileState::Gone:
      return host.output().Fail({ExitCode::NotFound, Printable(folder.Shown(file.path)) +
                                                         " is not on the server any more; nothing was sent"});
    default:
      break;
  }
  if (file.isModified) {
    return host.output().Fail(
        {ExitCode::Incomplete, Printable(folder.Shown(file.path)) +
                                   " was not sent: the server could not be asked for its newest version"});
  }
  if (file.state == FileState::Missing) {
    return host.output().Fail({ExitCode::LocalFile,
                               Printable(folder.Shown(file.path)) + " is not here; nothing of it was sent",
                               "vtdirect pull brings it back"});
  }
  host.output().Note(folder.Shown(file.path) + " is not changed, and not sent");
  return ExitCode::Ok;
}

// What the side of the server tells of these files alone.
[[nodiscard]] std::vector<Comparison> CompareFiles(const LocalSide& side, const RemoteTree& tree,
                                                   const std::vector<FolderFile>& files) {
  LocalSide chosen;
  for (const FolderFile& file : files) {
    chosen.kept.emplace(file.path, file);
    chosen.states.emplace(file.path, side.states.at(file.path));
  }
  std::vector<Comparison> comparisons;
  for (Comparison& comparison : Compare(chosen, tree)) {
    if (comparison.file) comparisons.push_back(std::move(comparison));
  }
  return comparisons;
}

ExitCode CommitAll(Host& host, WorkFolder& folder, const LocalSide& side,
                   const std::vector<FolderFile>& files, bool dryRun) {
  ForgetReasons();
  const RemoteTree tree =
      ReadRemoteFolders(folder.store().server(), FoldersOf(files), usualThreads, side.kept);
  BatchEnd end;
  for (const Failure& failure : tree.failures) {
    if (failure.code != ExitCode::Interrupted) end.worst = Worse(end.worst, host.output().Fail(failure));
  }
  for (const Comparison& file : CompareFiles(side, tree, files)) {
    if (Interrupted()) return host.output().Fail(InterruptedFailure());
    end.worst = Worse(end.worst, CommitOne(host, folder, file, dryRun));
    if (end.worst == ExitCode::Interrupted) return end.worst;
  }
  if (files.size() < 2) return end.worst;
  end.failures = host.output().failures();
  return FinishBatch(host, end, files.size() + tree.failures.size());
}

ExitCode RunCommit(Host& host, const Arguments& arguments) {
  const auto opened = WorkFolder::OpenHere();
  if (!opened) return host.output().Fail(opened.failure());
  WorkFolder& folder = **opened;
  if (const auto locked = folder.Lock()) return host.output().Fail(*locked);
  auto local = ReadLocalSide(folder);
  if (!local) return host.output().Fail(local.failure());
  std::vector<FolderFile> files;
  if (arguments.Has("FILE")) {
    const auto named = FilesNamed(folder, local->kept, arguments.All("FILE"));
    if (!named) return host.output().Fail(named.failure());
    files = *named;
    for (const FolderFile& file : files) {
      local->states[file.path] = StateByBytes(folder.OnDisk(file.path), file);
    }
  } else {
    files = ChangedFiles(*local);
    if (files.empty()) host.output().Note("no file was changed here");
  }
  return CommitAll(host, folder, *local, files, arguments.Has("dry-run"));
}

}  // namespace

CommandRow CommitCommand() {
  CommandRow row = {
      "commit",
      "Send the changed files of a work folder",
      "Checks the document of each FILE out, unless vtdirect has it checked out already, stores the file, "
      "and checks it in: one document after the other, and one line for each that is done. Without FILE all "
      "files are meant that st shows as changed here.\n\n"
      "A document whose newest version is not the one that the file came from is a conflict: nothing of it "
      "is sent, and the others go on. So is one into whose working copy, checked out before, something else "
      "was "
      "stored. The document keeps its source links, attributes and a viewable that the server "
      "carries over, as with put. Metadata is of one iteration, and the new one has none.\n\n"
      "When one fails, the state on the server and what to do next are told, and the same command can be "
      "given again: it goes on with the checkout that was made. A file that the server does not know is not "
      "sent; put creates a document.",
      {{"FILE", "A file of the work folder.", Count::AnyNumber}},
      {{.name = "dry-run",
        .help = "Say which files would be sent and which are in conflict, and send nothing."}},
      Requests::Some,
      RunCommit,
      {{"action", MemberType::Text, nullptr,
        "committed, known when the server had the file's content already, or with --dry-run would-commit"},
       {"file", MemberType::Text, nullptr, "the file, below the work folder"},
       {"path", MemberType::Text, nullptr, "the document's path on the server"},
       {"uid", MemberType::Text, nullptr, "UID of the version that the file is now, or came from"},
       {"version", MemberType::Text, nullptr, "that version"},
       {"bytes", MemberType::Number, nullptr, "the file's size"}}};
  row.worksInFolder = true;
  return row;
}

}  // namespace vtdirect_cli
