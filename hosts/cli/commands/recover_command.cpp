#include <algorithm>
#include <cerrno>
#include <cstring>

#include "hosts/cli/checkouts/recovery.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/diagnosis.h"
#include "hosts/cli/host.h"
#include "hosts/cli/interruption.h"
#include "hosts/cli/storing/unstored_files.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

void Show(Host& host, const JournalEntry& entry, const Finding& finding) {
  host.output().Row({{"since", entry.since},
                     {"step", entry.step},
                     {"address", entry.address},
                     {"settled", finding.isKnown},
                     {"found", finding.words}});
  static_cast<void>(host.output().Flush());
}

// What programs have written in a mount and the server does not have. A mount stores it, and nobody else: the
// one that is running may be just about to.
[[nodiscard]] std::uint64_t ShowUnstored(Host& host) {
  const UnstoredFiles unstored;
  const auto files = unstored.All();
  std::uint64_t open = 0;
  for (const UnstoredFile& file : files) {
    if (unstored.IsToBeDropped(file.name)) continue;
    ++open;
    const std::string content = unstored.ContentOf(file.name);
    const std::string todo = file.isWhole ? "waits for a mount with --write: "
                                          : "was written to in a mount and not closed, so it may be half: ";
    host.output().Row({{"since", file.since},
                       {"step", std::string("mount")},
                       {"address", file.address},
                       {"settled", false},
                       {"found", todo + content + " (" + file.fault + ")"}});
  }
  return open;
}

[[nodiscard]] std::optional<Failure> Discard(Host& host, const UnstoredFiles& unstored,
                                             const UnstoredFile& file) {
  using Discarded = UnstoredFiles::Discarded;
  const std::string content = unstored.ContentOf(file.name);
  const Discarded came = unstored.Discard(file);
  if (came == Discarded::Written) {
    return Failure{ExitCode::Failure, "a program is writing to " + file.address + " in a mount",
                   "close it there, and give the same command again"};
  }
  if (came == Discarded::Failed) {
    return Failure{ExitCode::LocalFile, "cannot remove " + content + ": " + std::strerror(errno)};
  }
  const std::string found = came == Discarded::Gone
                                ? "was given up; its bytes are gone"
                                : "is given up; its mount drops it within 15 seconds, or at vtdirect refresh";
  host.output().Row({{"since", file.since},
                     {"step", std::string("mount")},
                     {"address", file.address},
                     {"settled", true},
                     {"found", found}});
  return std::nullopt;
}

// Gives up files by the paths of their contents, as they are listed. All are looked for before any goes.
[[nodiscard]] ExitCode DiscardAll(Host& host, const std::vector<std::string>& paths) {
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
    if (const auto failure = Discard(host, unstored, file)) return host.output().Fail(*failure);
  }
  return ExitCode::Ok;
}

ExitCode RunRecover(Host& host, const Arguments& arguments) {
  if (arguments.Has("discard")) return DiscardAll(host, arguments.All("discard"));
  const auto entries = Journal().Open();
  if (!entries) return host.output().Fail(entries.failure());
  std::uint64_t open = 0;
  for (const JournalEntry& entry : *entries) {
    const Finding finding = FindOutWhatStands(host, entry);
    if (Interrupted()) return host.output().Fail(InterruptedFailure());
    SettleEntry(host, entry, finding);
    Show(host, entry, finding);
    if (!finding.isKnown) ++open;
  }
  open += ShowUnstored(host);
  if (open == 0) return ExitCode::Ok;
  return host.output().Fail(
      {ExitCode::Incomplete,
       std::to_string(open) +
           " changes could not be settled; they stay in the journal, or wait for a mount"});
}

}  // namespace

CommandRow RecoverCommand() {
  return {
      "recover",
      "Settle changes that were not confirmed",
      "Asks the servers about each change that was begun and whose answer never came: the program was "
      "killed, the connection broke, the time was over. Prints one line for each: since when, the step "
      "(checkout, checkin, undo, create, iterate, store, xliff put or xliff publish), the address, "
      "whether it is settled, and where things stand, parted by tabs. Nothing is guessed: what a server "
      "doesn't answer stays open, and the exit status is 11.\n\n"
      "A checkout that was done is kept (see checkouts), one that has ended is dropped and its temporary "
      "workspace cleared away. A store is compared with the bytes that the server has. Nothing is "
      "stored, checked in or thrown away. No question tells whether a translation is marked as "
      "published: such a change stays open until xliff publish has marked it once more.\n\n"
      "The changes are in $XDG_STATE_HOME/vtdirect/journal, or ~/.local/state/vtdirect/journal, from "
      "before they are sent until their answers are in. Files that were written in a mount and could not "
      "be stored are listed with the step mount; they are in $XDG_STATE_HOME/vtdirect/unstored, or "
      "~/.local/state/vtdirect/unstored. --discard gives one of them up. Every command on a server with such "
      "a change warns of it.",
      {},
      {{"discard", 0, "FILE", true, Completion::Files,
        "Give up a file that was written in a mount, by the path that is printed for it. Its bytes are lost. "
        "Nothing else is settled. May be given several times."}},
      true,
      RunRecover,
      {{"since", MemberType::Text, nullptr, "when it was begun: UTC, as 2026-01-31T09:00:00Z"},
       {"step", MemberType::Text, nullptr,
        "checkout, checkin, undo, create, iterate, store, xliff put or xliff publish"},
       {"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
       {"settled", MemberType::Flag, nullptr, "whether it is certain now how it ended"},
       {"found", MemberType::Text, nullptr, "where things stand, for a reader"}}};
}

}  // namespace vtdirect_cli
