#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/host.h"

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
  host.output().Note("forgotten; the server was not told of it, and a checkout that stands there stays");
  return ExitCode::Ok;
}

ExitCode RunCheckouts(Host& host, const Arguments& arguments) {
  const CheckoutBook book;
  const BookContents contents = book.Read();
  if (!contents.readable) return host.output().Fail({ExitCode::LocalFile, contents.fault});
  if (!contents.fault.empty()) host.output().Warning(contents.fault);
  if (arguments.Has("forget")) return ForgetOne(host, book, arguments.Text("forget"));
  for (const KeptCheckout& kept : contents.checkouts) {
    const Record record = RecordOf(kept);
    host.output().Row(Record(record.begin(), record.end() - 1), record);
  }
  return ExitCode::Ok;
}

}  // namespace

CommandRow CheckoutsCommand() {
  return {
      "checkouts",
      "List the checkouts that are kept",
      "Prints one line for each checkout that vtdirect keeps: since when, who holds it, the file name, and "
      "the UID of the working copy, parted by tabs. No request is made: verify tells whether one still "
      "stands.\n\nThey are kept in $XDG_STATE_HOME/vtdirect/checkouts, or "
      "~/.local/state/vtdirect/checkouts: checkout and put write it, checkin and undo take from it. "
      "Commands that take a document's address find its working copy there.",
      {},
      {{"forget", 0, "UID", false, Completion::Nothing,
        "Drop the checkout of this UID, without telling the server."}},
      false,
      RunCheckouts,
      {{"since", MemberType::Text, nullptr, "when it was first kept: UTC, as 2026-01-31T09:00:00Z"},
       {"user", MemberType::Text, nullptr, "who holds it, as the server calls them"},
       {"name", MemberType::Text, nullptr, "the name as it stands in a path, escaped"},
       {"uid", MemberType::Text, nullptr, "the working copy's UID"},
       {"document", MemberType::Text, nullptr, "the document's UID as it was before its checkout"}}};
}

}  // namespace vtdirect_cli
