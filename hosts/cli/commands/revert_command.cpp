#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/fetching.h"
#include "hosts/cli/work_folder/work_files.h"

namespace vtdirect_cli {
namespace {

constexpr int mostEdits = 1000;

/// Where the changed file is kept, or why it could not be.
struct KeptEdit {
  std::string name;
  int error = 0;
};

// By a second name of the same file, so that at no moment it is without one.
[[nodiscard]] KeptEdit KeepEdit(const std::string& place) {
  for (int number = 1; number <= mostEdits; ++number) {
    const std::string name = place + ".edited" + (number == 1 ? "" : "-" + std::to_string(number));
    if (link(place.c_str(), name.c_str()) == 0) return {name, 0};
    if (errno != EEXIST) return {{}, errno};
  }
  return {{}, EEXIST};
}

[[nodiscard]] Failure NotReverted(const std::string& path, int error) {
  return {ExitCode::LocalFile,
          "cannot replace " + Printable(path) + ": " + std::strerror(error) + "; it is left as it is"};
}

[[nodiscard]] ExitCode TellRevert(Host& host, const WorkFolder& folder, const FolderFile& file) {
  host.output().Row(
      {{"would", std::string("would revert")}, {"version", file.version}, {"file", folder.Shown(file.path)}},
      {{"file", file.path}, {"version", file.version}, {"uid", file.uid}, {"dry_run", true}});
  return ExitCode::Ok;
}

[[nodiscard]] ExitCode PutBack(Host& host, WorkFolder& folder, const FolderFile& file, bool isDryRun) {
  const std::string place = folder.OnDisk(file.path);
  std::optional<struct stat> before;
  struct stat facts = {};
  if (lstat(place.c_str(), &facts) == 0) before = facts;
  if (before && !S_ISREG(facts.st_mode))
    return host.output().Fail(NotReverted(folder.Shown(file.path), EISDIR));
  if (isDryRun) return TellRevert(host, folder, file);
  if (const int error = MakeFoldersFor(folder.root(), file.path); error != 0) {
    return host.output().Fail(NotReverted(folder.Shown(file.path), error));
  }
  Arrival arrival =
      FetchVersion(folder, folder.incoming(), {file.path, file.address, file.uid, file.version});
  if (arrival.failure) return host.output().Fail(*arrival.failure);
  KeptEdit edit;
  if (before) edit = KeepEdit(place);
  if (edit.error != 0) return host.output().Fail(NotReverted(folder.Shown(file.path), edit.error));
  if (const auto failure = PutInPlace(folder, arrival, before)) {
    if (!edit.name.empty()) unlink(edit.name.c_str());
    return host.output().Fail(*failure);
  }
  const std::string kept = edit.name.empty() ? "" : edit.name.substr(folder.root().size() + 1);
  const std::string shown = kept.empty() ? "" : folder.Shown(kept);
  host.output().Row({{"edit", shown}},
                    {{"file", file.path}, {"version", file.version}, {"uid", file.uid}, {"edit", kept}});
  static_cast<void>(host.output().Flush());
  host.output().Note(folder.Shown(file.path) + " is version " + file.version + " again" +
                     (kept.empty() ? "" : "; what it was is in " + shown));
  return ExitCode::Ok;
}

[[nodiscard]] ExitCode RevertOne(Host& host, WorkFolder& folder, const FolderFile& file, bool isDryRun) {
  if (StateByBytes(folder.OnDisk(file.path), file) != LocalState::Same) {
    return PutBack(host, folder, file, isDryRun);
  }
  host.output().Note(folder.Shown(file.path) + " is not changed, and left as it is");
  return ExitCode::Ok;
}

ExitCode RunRevert(Host& host, const Arguments& arguments) {
  return WorkOnNamedFiles(host, arguments, Others::MustWait, [&](WorkFolder& folder, const FolderFile& file) {
    return RevertOne(host, folder, file, IsDryRun(arguments));
  });
}

}  // namespace

CommandRow RevertCommand() {
  CommandRow row = {
      "revert",
      "Put a file of a work folder back as it came",
      "Fetches the version again that each FILE came from, and puts it in its place. What the file was stays "
      "beside it, as FILE.edited, FILE.edited-2 and so on, and the name is printed.\n\n"
      "A checkout of the document stays; undo ends it.",
      {{"FILE", "A file of the work folder.", Count::AtLeastOnce}},
      {DryRunOption()},
      Requests::Some,
      RunRevert,
      {{"file", MemberType::Text, nullptr, "the file, below the work folder"},
       {"version", MemberType::Text, nullptr, "the version that it is again"},
       {"uid", MemberType::Text, nullptr, "that version's UID"},
       {"edit", MemberType::Text, "without --dry-run",
        "where the changed file is; empty when there was none"},
       DryRunMember("true: it could be put back, and was not")}};
  row.worksInFolder = true;
  return row;
}

}  // namespace vtdirect_cli
