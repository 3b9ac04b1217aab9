#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/work_folder/work_files.h"

namespace vtdirect_cli {
namespace {

void Show(Host& host, const FolderFile& file, const RemoteVersion& version, bool isNewest) {
  const bool isHere = AreSameUid(version.uid, file.uid);
  std::string mark = isHere ? "here" : "";
  if (isNewest) mark += mark.empty() ? "latest" : " latest";
  host.output().Row({{"version", version.version}, {"uid", version.uid}, {"mark", mark}},
                    {{"file", file.path},
                     {"version", version.version},
                     {"uid", version.uid},
                     {"here", isHere},
                     {"latest", isNewest}});
}

[[nodiscard]] ExitCode LogOne(Host& host, const WorkFolder& folder, const FolderFile& file) {
  const auto history = VersionsOf(folder.server(), file);
  if (!history) return host.output().Fail(history.failure());
  for (std::size_t number = 0; number < history->versions.size(); ++number) {
    Show(host, file, history->versions[number], number == 0);
  }
  if (!history->isComplete) {
    host.output().Note("this server lists no versions here: shown are the newest and the file's own");
  }
  return ExitCode::Ok;
}

ExitCode RunLog(Host& host, const Arguments& arguments) {
  return WorkOnNamedFiles(
      host, arguments, Others::MayWork,
      [&host](const WorkFolder& folder, const FolderFile& file) { return LogOne(host, folder, file); });
}

}  // namespace

CommandRow LogCommand() {
  CommandRow row = {
      "log",
      "List the versions of a file of a work folder",
      "Prints version and UID of each version of the document of each FILE, the newest first, and \"here\" "
      "beside the one that the file came from, separated by tabs. A server before schema 5 tells the newest "
      "alone, and the file's own is shown beside it. Who made a version is not told by a listing.",
      {{"FILE", "A file of the work folder.", Count::AtLeastOnce}},
      {},
      Requests::Some,
      RunLog,
      {{"file", MemberType::Text, nullptr, "the file, below the work folder"},
       {"version", MemberType::Text, nullptr, "the version"},
       {"uid", MemberType::Text, nullptr, "UID of this version"},
       {"here", MemberType::Flag, nullptr, "whether the file came from it"},
       {"latest", MemberType::Flag, nullptr, "whether it is the newest"}}};
  row.worksInFolder = true;
  return AsListing(row, {"version", "uid"}, "Sort the lines by this column: version or uid.");
}

}  // namespace vtdirect_cli
