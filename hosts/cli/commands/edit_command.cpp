#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/editing/edit_steps.h"
#include "hosts/cli/editing/editing.h"
#include "hosts/cli/editing/lasting_name.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::string ChosenEditor() {
  const std::string visual = Environment("VISUAL");
  return visual.empty() ? Environment("EDITOR") : visual;
}

[[nodiscard]] ExitCode TellEdit(Host& host, const std::string& address) {
  const StepResult step = CheckoutBook().Find(VtDirectManager::GetUID(address.c_str()))
                              ? StepResult()
                              : TryToCheckOut(host, address);
  if (step.failure) return host.output().Fail(*step.failure);
  host.output().Row({{"would", std::string("would edit")}, {"address", address}},
                    {{"address", address}, {"dry_run", true}});
  return ExitCode::Ok;
}

ExitCode RunEdit(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  if (IsDryRun(arguments)) return TellEdit(host, address);
  const std::string editor = ChosenEditor();
  if (editor.empty()) {
    return host.output().Fail(
        {ExitCode::Usage, "no editor is named", "set VISUAL or EDITOR, for example VISUAL=vi"});
  }
  const auto kind = RequireAddress(address);
  if (!kind) return host.output().Fail(kind.failure());
  ForgetReasons();
  const std::string document = VtDirectManager::GetUID(address.c_str());
  if (document.empty()) return host.output().Fail(Diagnose(host, address, Seen::Missing));
  if (const auto elsewhere = RefusalOfAnotherPlace(address, document)) return host.output().Fail(*elsewhere);
  const auto name = NameOfEditedFile(address, document);
  if (!name) return host.output().Fail(name.failure());
  const auto lastingName = LastingName(address, *kind, document);
  if (!lastingName) return host.output().Fail(lastingName.failure());
  auto kept = KeptEdit::Open(*lastingName, *name);
  if (!kept) return host.output().Fail(kept.failure());
  return EditKept(host, {address, document, arguments.Text("metadata")}, std::move(*kept), editor);
}

}  // namespace

CommandRow EditCommand() {
  return {
      "edit",
      "Edit a document in your editor",
      "Checks the document at ADDRESS out, fetches it, opens it in the editor that VISUAL names, else "
      "EDITOR, and waits until that ends. Then it stores what was edited and checks it in; when nothing "
      "was changed it undoes the checkout. Prints the UID to go on with. While the editor is open others "
      "may store into the working copy: then nothing is stored over that, and the checkout is not undone.\n\n"
      "A document that vtdirect has checked out before (see checkouts) is edited in its working copy, "
      "and stays checked out. Like put, an edit keeps the document's links. Metadata is of one iteration "
      "and can't be fetched: without --metadata the new iteration has none, and a warning says so where "
      "the server takes metadata at all.\n\n"
      "The file lies in $XDG_STATE_HOME/vtdirect/edits or ~/.local/state/vtdirect/edits until the server "
      "has what is in it. Whatever fails, also when the program is killed, it stays there, the failure "
      "says where, and the same command goes on with it; unless the server has a newer version by then, "
      "which is a conflict. Other files that the editor leaves beside it stay too: one may be all that it "
      "has "
      "saved.\n\n"
      "An editor that returns at once, with a window of its own, has to be told to wait: VISUAL=\"code "
      "--wait\".",
      {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
      {{.name = "metadata",
        .value = "FILE",
        .completion = Completion::Files,
        .help = "Store this file as the document's metadata."},
       DryRunOption()},
      Requests::Some,
      RunEdit,
      {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
       {"uid", MemberType::Text, "without --dry-run", "the UID to go on with"},
       {"action", MemberType::Text, "without --dry-run", "stored or unchanged"},
       {"checked_in", MemberType::Flag, "without --dry-run", "whether what was stored was checked in"},
       {"checked_out", MemberType::Flag, "without --dry-run",
        "whether the document is still checked out here"},
       DryRunMember("true: it could be edited, and was not")}};
}

}  // namespace vtdirect_cli
