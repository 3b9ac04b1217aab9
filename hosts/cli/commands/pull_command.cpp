#include "hosts/cli/commands/command.h"
#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/failures/retrying.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/work_folder/pulling.h"

namespace vtdirect_cli {
namespace {

ExitCode RunPull(Host& host, const Arguments& arguments) {
  const auto effort = ReadEffort(arguments);
  if (!effort) return host.output().Fail(effort.failure());
  const auto opened = WorkFolder::OpenHere();
  if (!opened) return host.output().Fail(opened.failure());
  WorkFolder& folder = **opened;
  if (const auto locked = folder.Lock()) return host.output().Fail(*locked);
  const auto kept = ReadKept(folder);
  if (!kept) return host.output().Fail(kept.failure());
  ForgetReasons();
  const RemoteTree tree = ReadRemoteTree(folder.store().server(), {"", folder.address()}, *effort, {}, *kept);
  if (IsDryRun(arguments)) return TellPull(host, &folder, tree);
  return PullAll(host, folder, tree, *effort);
}

}  // namespace

CommandRow PullCommand() {
  CommandRow row = {
      "pull",
      "Bring a work folder up to date",
      "Fetches what the server has newer, what is new there, and what is missing here. The whole work folder "
      "is brought up to date, wherever in it the command is given.\n\n"
      "A file that was changed here is never replaced. When the server has a newer version of it, that is "
      "told, and the exit status is 1; unless the file has that version's bytes already. A file that did not "
      "come from the server is left as it is too, and so is one whose document is gone from there.\n\n"
      "Each folder is listed once, and no document is asked for that has not changed; servers before schema "
      "5 are asked for each document. What was fetched before a failure stays, and the next pull goes on "
      "there.",
      {},
      {ParallelOption(), RetriesOption(), DryRunOption("Say which files would be fetched, and fetch none.")},
      Requests::Some,
      RunPull,
      PullMembers()};
  row.worksInFolder = true;
  return row;
}

}  // namespace vtdirect_cli
