#include "hosts/cli/commands/discard_unstored.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include "hosts/cli/storing/unstored_files.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

using Discarded = UnstoredFiles::Discarded;

[[nodiscard]] std::string WordsFor(Discarded came, bool isDryRun) {
  if (isDryRun) return came == Discarded::Gone ? "would be given up" : "would be given up by its mount";
  return came == Discarded::Gone
             ? "was given up; its bytes are gone"
             : "is given up; its mount drops it within 15 seconds, or at vtdirect refresh";
}

[[nodiscard]] std::optional<Failure> DiscardOne(Host& host, const UnstoredFile& file, bool isDryRun) {
  const UnstoredFiles unstored;
  const Discarded came = unstored.Discard(file, isDryRun);
  if (came == Discarded::Written) {
    return Failure{ExitCode::Failure, "a program is writing to " + file.address + " in a mount",
                   "close it there, and give the same command again"};
  }
  if (came == Discarded::Failed) {
    return Failure{ExitCode::LocalFile,
                   "cannot remove " + unstored.ContentOf(file.name) + ": " + std::strerror(errno)};
  }
  const Record shown{{"since", file.since},
                     {"step", std::string("mount")},
                     {"address", file.address},
                     {"settled", !isDryRun},
                     {"found", WordsFor(came, isDryRun)}};
  Record json = shown;
  if (isDryRun) json.emplace_back("dry_run", true);
  host.output().Row(shown, json);
  return std::nullopt;
}

}  // namespace

ExitCode DiscardUnstored(Host& host, const std::vector<std::string>& paths, bool isDryRun) {
  const UnstoredFiles unstored;
  const auto files = unstored.All();
  std::vector<UnstoredFile> wanted;
  for (const std::string& path : paths) {
    const auto place = std::find_if(files.begin(), files.end(), [&](const UnstoredFile& file) {
      return unstored.ContentOf(file.name) == path;
    });
    if (place == files.end()) {
      return host.output().Fail({ExitCode::NotFound, Printable(path) + " is none of the files that wait",
                                 "vtdirect recover lists them"});
    }
    wanted.push_back(*place);
  }
  for (const UnstoredFile& file : wanted) {
    if (const auto failure = DiscardOne(host, file, isDryRun)) return host.output().Fail(*failure);
  }
  return ExitCode::Ok;
}

}  // namespace vtdirect_cli
