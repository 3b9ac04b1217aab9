#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/work_folder/difference.h"
#include "hosts/cli/work_folder/fetching.h"
#include "hosts/cli/work_folder/work_files.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] ExitCode DiffOne(Host& host, const WorkFolder& folder, const FolderFile& file) {
  const std::string name = folder.Shown(file.path);
  const LocalState state = StateByBytes(folder.OnDisk(file.path), file);
  const bool differs = state != LocalState::Same;
  host.output().JsonOnly({{"file", file.path}, {"version", file.version}, {"differs", differs}});
  if (!differs) host.output().NoteToWatcher(name + " does not differ");
  if (!differs || host.output().json()) return ExitCode::Ok;
  if (state == LocalState::Missing) {
    return host.output().Fail({ExitCode::LocalFile, name + " is not here; vtdirect revert fetches it"});
  }
  const Arrival old =
      FetchVersion(folder, host.workDirectory(), {file.path, file.address, file.uid, file.version});
  if (old.failure) return host.output().Fail(*old.failure);
  static_cast<void>(host.output().Flush());
  const auto failure = ShowDifference({old.pending->path(), name + " (version " + file.version + ")"},
                                      {folder.OnDisk(file.path), name});
  return failure ? host.output().Fail(*failure) : ExitCode::Ok;
}

// Without names.
[[nodiscard]] ExitCode WorkOnChangedFiles(Host& host, const WorkOnFile& work) {
  const auto opened = WorkFolder::OpenHere();
  if (!opened) return host.output().Fail(opened.failure());
  const auto local = ReadLocalSide(**opened);
  if (!local) return host.output().Fail(local.failure());
  ForgetReasons();
  ExitCode worst = ExitCode::Ok;
  const std::vector<FolderFile> changed = ChangedFiles(*local);
  if (changed.empty()) host.output().NoteToWatcher("nothing differs");
  for (const FolderFile& file : changed) {
    if (Interrupted()) return host.output().Fail(InterruptedFailure());
    worst = Worse(worst, work(**opened, file));
  }
  return worst;
}

ExitCode RunDiff(Host& host, const Arguments& arguments) {
  const auto diff = [&host](const WorkFolder& folder, const FolderFile& file) {
    return DiffOne(host, folder, file);
  };
  return arguments.Has("FILE") ? WorkOnNamedFiles(host, arguments, Others::MayWork, diff)
                               : WorkOnChangedFiles(host, diff);
}

}  // namespace

CommandRow DiffCommand() {
  CommandRow row = {"diff",
                    "Show what was changed in files of a work folder",
                    "Compares each FILE with the version that it came from, by \"diff -u\"; without FILE all "
                    "files that were changed here. When VTDIRECT_DIFF is set, that command is run instead, "
                    "with the old file and the new one; what it exits with plays no part.\n\n"
                    "A file that was not changed shows nothing. With --json no tool is run, and whether they "
                    "differ is told.",
                    {{"FILE", "A file of the work folder.", Count::AnyNumber}},
                    {},
                    Requests::Some,
                    RunDiff,
                    {{"file", MemberType::Text, nullptr, "the file, below the work folder"},
                     {"version", MemberType::Text, nullptr, "the version that it came from"},
                     {"differs", MemberType::Flag, nullptr, "whether it was changed"}}};
  row.worksInFolder = true;
  return row;
}

}  // namespace vtdirect_cli
