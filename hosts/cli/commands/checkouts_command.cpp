#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/escaped_name.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Record RecordOf(const KeptCheckout& kept) {
  return {{"since", kept.since},
          {"user", kept.user},
          {"name", kept.name},
          {"uid", kept.uid},
          {"document", kept.document}};
}

[[nodiscard]] ExitCode ForgetOne(Host& host, const CheckoutBook& book, const std::string& uid) {
  const auto kept = book.Find(uid);
  if (!kept) {
    return host.output().Fail(
        {ExitCode::NotFound, "no checkout of " + uid + " is kept; give a UID that checkouts shows"});
  }
  const std::string fault = book.Forget(uid);
  if (!fault.empty()) return host.output().Fail({ExitCode::LocalFile, fault});
  host.output().Row({{"uid", kept->uid}}, RecordOf(*kept));
  host.output().Note("forgotten; the server was not told of it, and a checkout there stays");
  return ExitCode::Ok;
}

// A working copy on the server as one that is kept, with what only the book knows if it is in there.
[[nodiscard]] KeptCheckout DescribeCopy(const VtDirectManager::TemporaryCheckout& copy,
                                        const std::optional<KeptCheckout>& kept) {
  if (kept) return *kept;
  KeptCheckout found{{}, copy.uid, EscapedName(copy.fileName), {}, {}};
  if (copy.uid.empty()) return found;
  found.document = ByDocumentId(copy.uid);
  found.user = ReadCheckoutState(copy.uid).user;
  return found;
}

void ShowCopy(Host& host, const VtDirectManager::TemporaryCheckout& copy) {
  auto kept = copy.uid.empty() ? std::nullopt : CheckoutBook().Find(copy.uid);
  if (kept && !AreSameUid(kept->uid, copy.uid)) kept.reset();
  const KeptCheckout found = DescribeCopy(copy, kept);
  Record record = RecordOf(found);
  record.insert(record.end(), {{"workspace", copy.workspaceName},
                               {"number", copy.documentNumber},
                               {"version", copy.version},
                               {"kept", kept.has_value()}});
  const auto orDash = [](const std::string& text) { return text.empty() ? "-" : text; };
  host.output().Row({{"since", orDash(found.since)},
                     {"user", orDash(found.user)},
                     {"name", orDash(found.name)},
                     {"uid", orDash(found.uid)}},
                    record);
  if (!copy.uid.empty()) return;
  host.output().Warning("the server does not tell from which document the working copy of " + found.name +
                        " (" + copy.documentNumber + ") in the temporary workspace " + copy.workspaceName +
                        " was taken, so there is no UID of it to go on with");
}

[[nodiscard]] ExitCode ListOnServer(Host& host, const std::string& nickname) {
  const std::string root = "//" + nickname + "/";
  if (const auto failure = RequireListedServer(root, AddressKind::Path)) return host.output().Fail(*failure);
  ForgetReasons();
  const VtDirectManager::Outcome outcome;
  const auto copies = VtDirectManager::FindTemporaryCheckouts(root.c_str());
  // A list that can't be read is not an empty one.
  if (!copies || AQuestionFailed(outcome)) {
    const std::string why = WordsOfLastReason();
    if (const auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(root.c_str()))) {
      return host.output().Fail(*failure);
    }
    return host.output().Fail({ExitCode::Failure, "the working copies on " + nickname +
                                                      " could not be found out" +
                                                      (why.empty() ? "" : " (" + why + ")") +
                                                      "; the same command can be given again"});
  }
  for (const auto& copy : *copies) ShowCopy(host, copy);
  if (copies->empty()) host.output().NoteToWatcher("you have no working copies there");
  return ExitCode::Ok;
}

ExitCode RunCheckouts(Host& host, const Arguments& arguments) {
  const CheckoutBook book;
  const BookContents contents = book.Read();
  if (!contents.readable) return host.output().Fail({ExitCode::LocalFile, contents.fault});
  if (!contents.fault.empty()) host.output().Warning(contents.fault);
  if (arguments.Has("forget") && arguments.Has("on")) {
    return host.output().Fail({ExitCode::Usage, "--forget and --on exclude each other"});
  }
  if (arguments.Has("forget")) return ForgetOne(host, book, arguments.Text("forget"));
  if (arguments.Has("on")) return ListOnServer(host, arguments.Text("on"));
  for (const KeptCheckout& kept : contents.checkouts) {
    const Record record = RecordOf(kept);
    host.output().Row(Record(record.begin(), record.end() - 1), record);
  }
  if (contents.checkouts.empty() && contents.fault.empty())
    host.output().NoteToWatcher("no checkouts are kept; \"vtdirect checkouts --on NICK\" asks a server");
  return ExitCode::Ok;
}

}  // namespace

CommandRow CheckoutsCommand() {
  return AsListing(
      {"checkouts",
       "List the checkouts that are kept, or those on a server",
       "Prints one line for each checkout that vtdirect keeps: since when, who holds it, the file name, and "
       "the UID of the working copy, separated by tabs. No request is made: verify tells whether one is "
       "still there.\n\n--on asks a server instead, and shows each working copy that you have there in a "
       "temporary workspace, also those that are not kept here: they were made on another machine, or by a "
       "program that was ended in the middle. What is not known is shown as \"-\". put, checkin, undo, "
       "verify and get find such a working copy by the document's address, and say so. Nothing is changed, "
       "and a question that fails gives exit status 1 and no list.\n\nThey are kept in "
       "$XDG_STATE_HOME/vtdirect/checkouts, or ~/.local/state/vtdirect/checkouts: checkout and put write it, "
       "checkin and undo take from it. Commands that take a document's address find its working copy there.",
       {},
       {{.name = "forget",
         .value = "UID",
         .help = "Drop the checkout of this UID, without telling the server."},
        {.name = "on",
         .value = "NICK",
         .completion = Completion::Nicknames,
         .help = "Show your working copies in the temporary workspaces of this server."}},
       Requests::Some,
       RunCheckouts,
       {{"since", MemberType::Text, nullptr,
         "when it was first kept: UTC, as 2026-01-31T09:00:00Z; empty for one that is not kept"},
        {"user", MemberType::Text, nullptr, "who holds it, as the server calls them"},
        {"name", MemberType::Text, nullptr, "the name as it is in a path, escaped"},
        {"uid", MemberType::Text, nullptr, "the working copy's UID; empty when the server does not tell it"},
        {"document", MemberType::Text, nullptr, "the document's UID as it was before its checkout"},
        {"workspace", MemberType::Text, "with --on", "the name of its temporary workspace"},
        {"number", MemberType::Text, "with --on", "the document's number"},
        {"version", MemberType::Text, "with --on", "the version that it was taken from"},
        {"kept", MemberType::Flag, "with --on", "whether it is kept"}}},
      {"since", "user", "name", "uid"}, "Sort the lines by this column: since, user, name or uid.");
}

}  // namespace vtdirect_cli
