#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/checkouts/recovery.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/commands/discard_unstored.h"
#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/storing/unstored_files.h"

namespace vtdirect_cli {
namespace {

void Show(Host& host, const JournalEntry& entry, const Finding& finding, bool isDryRun) {
  const Record shown{{"since", entry.since},
                     {"step", entry.step},
                     {"address", entry.address},
                     {"settled", finding.isKnown},
                     {"found", finding.words}};
  Record json = shown;
  if (isDryRun) json.emplace_back("dry_run", true);
  host.output().Row(shown, json);
  static_cast<void>(host.output().Flush());
}

/// Asks about entries, each of its server, by the way that is set for that one.
class Asking {
 public:
  Asking(Host& host, const Arguments& arguments) : host_(host), arguments_(arguments) {}

  [[nodiscard]] Finding FindOut(const JournalEntry& entry) {
    if (const auto failure = WorkWithServerOf(entry)) {
      return {.isKnown = false,
              .words = "the state of " + entry.address + " could not be found out (" + failure->Text() +
                       "); \"vtdirect recover\" asks again"};
    }
    return FindOutState(host_, entry);
  }

 private:
  // Only where the server is another one: what the last one has made of a login would be forgotten.
  [[nodiscard]] std::optional<Failure> WorkWithServerOf(const JournalEntry& entry) {
    const std::string url = VtDirectManager::GetServerURL(entry.uid.c_str());
    if (url.empty() || url == url_) return std::nullopt;
    url_ = url;
    auto failure = host_.WorkWith({url}, arguments_);
    if (failure) url_.clear();
    return failure;
  }

  Host& host_;
  const Arguments& arguments_;
  std::string url_;
};

// What programs have written in a mount and the server does not have. A mount stores it, and nobody else: the
// one that is running may be just about to.
[[nodiscard]] Result<std::uint64_t> ShowUnstored(Host& host) {
  const UnstoredFiles unstored;
  const auto listing = unstored.List();
  std::uint64_t open = 0;
  for (const UnstoredFile& file : listing.files) {
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
  if (auto failure = unstored.FailureOf(listing)) return *failure;
  return open;
}

[[nodiscard]] Failure StillOpen(std::uint64_t changes) {
  if (changes == 1)
    return {ExitCode::Incomplete,
            "1 change could not be settled; it stays in the journal, or waits for a mount"};
  return {ExitCode::Incomplete,
          std::to_string(changes) +
              " changes could not be settled; they stay in the journal, or wait for a mount"};
}

// What a command that is at work has begun is not confirmed yet, and is that command's to settle.
void SayThatNothingIsOpen(Host& host, const OpenChanges& changes) {
  host.output().NoteToWatcher(changes.underWay == 0
                                  ? "every change is confirmed"
                                  : "nothing is open but what commands that are at work have begun");
}

ExitCode RunRecover(Host& host, const Arguments& arguments) {
  if (arguments.Has("discard")) {
    return DiscardUnstored(host, arguments.All("discard"), IsDryRun(arguments));
  }
  const auto changes = Journal().Open();
  if (!changes) return host.output().Fail(changes.failure());
  if (!changes->fault.empty()) host.output().Warning(changes->fault);
  std::uint64_t open = changes->unreadable;
  Asking asking(host, arguments);
  for (const JournalEntry& entry : changes->entries) {
    const Finding finding = asking.FindOut(entry);
    if (Interrupted()) return host.output().Fail(InterruptedFailure());
    if (!IsDryRun(arguments)) SettleEntry(host, entry, finding);
    Show(host, entry, finding, IsDryRun(arguments));
    if (!finding.isKnown) ++open;
  }
  const auto unstored = ShowUnstored(host);
  if (!unstored) return host.output().Fail(unstored.failure());
  open += *unstored;
  if (open == 0 && changes->entries.empty()) SayThatNothingIsOpen(host, *changes);
  return open == 0 ? ExitCode::Ok : host.output().Fail(StillOpen(open));
}

}  // namespace

CommandRow RecoverCommand() {
  return {
      "recover",
      "Settle changes that were not confirmed",
      "Asks the servers about each change that was begun and whose answer never came: the program was "
      "killed, the connection broke, the time was over. Prints one line for each: since when, the step "
      "(checkout, checkin, undo, create, iterate, store, xliff put or xliff publish), the address, "
      "whether it is settled, and the state on the server, separated by tabs. Nothing is guessed: what a "
      "server doesn't answer stays open, and the exit status is 11.\n\n"
      "A checkout that was done is kept (see checkouts), one that has ended is dropped and its temporary "
      "workspace cleared away. A store is compared with the bytes that the server has. Nothing is "
      "stored, checked in or thrown away. No question tells whether a translation is marked as "
      "published: such a change stays open until xliff publish has marked it once more.\n\n"
      "The changes are in $XDG_STATE_HOME/vtdirect/journal, or ~/.local/state/vtdirect/journal, from "
      "before they are sent until their answers are in. Files that were written in a mount and could not "
      "be stored are listed with the step mount; they are in $XDG_STATE_HOME/vtdirect/unstored, or "
      "~/.local/state/vtdirect/unstored. --discard gives one of them up. Every command on a server with "
      "such a change warns of it.",
      {},
      {{.name = "discard",
        .value = "FILE",
        .repeatable = true,
        .completion = Completion::Files,
        .help =
            "Give up a file that was written in a mount, by the path that is printed for it. Its bytes are "
            "lost. Nothing else is settled. May be given several times."},
       DryRunOption("Say what is found on the server, and leave the journal as it is.")},
      Requests::Some,
      RunRecover,
      {{"since", MemberType::Text, nullptr, "when it was begun: UTC, as 2026-01-31T09:00:00Z"},
       {"step", MemberType::Text, nullptr,
        "checkout, checkin, undo, create, iterate, store, xliff put or xliff publish"},
       {"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
       {"settled", MemberType::Flag, nullptr, "whether it is certain now how it ended"},
       {"found", MemberType::Text, nullptr, "the state on the server, for a reader"},
       DryRunMember("true: the change is in the journal as before")}};
}

}  // namespace vtdirect_cli
