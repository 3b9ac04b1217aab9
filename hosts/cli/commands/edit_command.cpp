#include <unistd.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/editing/edit_steps.h"
#include "hosts/cli/editing/foreground_program.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/sha256.h"
#include "hosts/cli/files/target_file.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption_report.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

/// One call of the command.
class Editing {
 public:
  /// @param metadata  local file that is stored as the document's metadata; empty for none
  Editing(Host& host, std::string address, std::string document, std::string metadata, KeptEdit kept)
      : host_(host),
        address_(std::move(address)),
        document_(std::move(document)),
        metadata_(std::move(metadata)),
        kept_(std::move(kept)) {}

  [[nodiscard]] ExitCode Run(const std::string& editor) {
    goesOn_ = HasUnstored();
    auto failure = goesOn_ ? RefusalToGoOn() : std::nullopt;
    if (!failure) WarnOfMetadata();
    if (!failure) failure = CheckOut();
    if (!failure) failure = Fetch();
    if (!failure) failure = Edit(editor);
    if (!failure) failure = IsChanged() ? Store() : End();
    if (failure) return FailWithPlace(*failure);
    kept_.Remove();
    return Report();
  }

 private:
  // What was edited before was made from another version, so somebody's work would go if it were stored.
  [[nodiscard]] std::optional<Failure> RefusalToGoOn() {
    host_.output().Note("going on with the edit that is kept in " + kept_.file());
    if (IsCheckedOutHere()) return std::nullopt;
    ForgetReasons();
    const auto state = AskForNewest(document_);
    if (!state) return Diagnose(host_, address_, Seen::Unknown);
    const std::string& newest = state->newestVersion;
    const std::string known = kept_.KnownVersion();
    if (known.empty() || newest.empty() || known == newest) return std::nullopt;
    return Failure{
        ExitCode::Failure,
        "conflict: what was edited was made from version " + known + ", and the server has version " + newest,
        "move the file away to edit the new version; " + StoreCommand() + " stores it all the same",
        std::nullopt, FailureClass::Conflict};
  }

  // Metadata is of one iteration, and there is no way to fetch it, so what the document has can't be stored again.
  void WarnOfMetadata() {
    if (!metadata_.empty() || !VtDirectManager::SupportsVCSMetadata(address_.c_str())) return;
    host_.output().Warning(
        "if " + address_ +
        " has metadata, the version that this edit makes has none; --metadata FILE stores it");
    ForgetReasons();
  }

  [[nodiscard]] bool IsCheckedOutHere() const { return CheckoutBook().Find(document_).has_value(); }

  // Whether the server may lack what is in the file.
  [[nodiscard]] bool HasUnstored() const {
    const auto checkout = CheckoutBook().Find(document_);
    return kept_.HasUnstored(checkout ? checkout->uid : "");
  }

  [[nodiscard]] std::optional<Failure> CheckOut() {
    if (IsCheckedOutHere()) return std::nullopt;
    KeepStage(EditStage::Begun);
    const StepResult step = CheckOutToEdit(host_, address_);
    if (!step.failure) KeepStage(EditStage::CheckedOut);
    return step.failure;
  }

  void KeepStage(EditStage stage) {
    const std::string fault = kept_.SetStage(stage);
    if (fault.empty()) return;
    host_.output().Warning(
        "how far the edit has come is not kept, so a second one would not end its checkout: " + fault);
  }

  [[nodiscard]] std::optional<Failure> Fetch() {
    if (goesOn_) return std::nullopt;
    const StepResult step = FetchToEdit(host_, address_, kept_.file());
    if (step.failure) {
      UndoAfterFailure();
      return step.failure;
    }
    fetched_ = Sha256OfFile(kept_.file());
    return std::nullopt;
  }

  [[nodiscard]] std::optional<Failure> Edit(const std::string& editor) {
    if (Interrupted()) return InterruptedFailure();
    InterruptionReport report(host_, "edit");
    report.Tell(address_ + " is checked out, and what was edited is in " + kept_.file() + "; " +
                CommandToType("edit", address_) + " goes on with it");
    host_.output().Note("editing " + kept_.file());
    const int status = RunInForeground(editor, {kept_.file()});
    if (status == 0 && access(kept_.file().c_str(), R_OK) == 0) return std::nullopt;
    if (!IsChanged()) UndoAfterFailure();
    if (status == 0) return Failure{ExitCode::LocalFile, "the editor has left no file; nothing was stored"};
    return Failure{ExitCode::Failure,
                   "the editor " + Printable(editor) +
                       (status < 0 ? " can't be started" : " ended with status " + std::to_string(status)) +
                       "; nothing was stored"};
  }

  [[nodiscard]] bool IsChanged() const {
    const std::string sum = Sha256OfFile(kept_.file());
    if (goesOn_) return !sum.empty() && HasUnstored();
    const std::string known = kept_.KnownSum();
    return !sum.empty() && sum != (known.empty() ? fetched_ : known);
  }

  [[nodiscard]] bool MayEndCheckout() const { return kept_.stage() != EditStage::Begun; }

  [[nodiscard]] std::optional<Failure> Store() {
    action_ = "stored";
    const bool checkIn = MayEndCheckout();
    if (checkIn) KeepStage(EditStage::Storing);
    const StepResult step = StoreEdited(host_, address_, {kept_.file(), metadata_}, checkIn);
    uid_ = step.uid;
    checkedIn_ = !step.failure && checkIn;
    return step.failure;
  }

  // Nothing was edited. What an earlier run has stored is checked in, as it would have been then.
  [[nodiscard]] std::optional<Failure> End() {
    const EditStage stage = kept_.stage();
    if (stage == EditStage::Begun) return std::nullopt;
    const bool wasStored = stage == EditStage::Storing;
    if (wasStored) action_ = "stored";
    const StepResult step = wasStored ? CheckInEdited(host_, address_) : UndoUnedited(host_, address_);
    uid_ = step.uid;
    checkedIn_ = !step.failure && wasStored;
    return step.failure;
  }

  // The checkout that was made for an edit that did not come to be. Its own failure is told beside the other.
  void UndoAfterFailure() {
    if (kept_.stage() != EditStage::CheckedOut || goesOn_ || Interrupted()) return;
    const StepResult step = UndoUnedited(host_, address_);
    if (!step.failure) {
      kept_.Remove();
      return;
    }
    host_.output().Warning(address_ + " is still checked out: " + step.failure->Text());
  }

  [[nodiscard]] std::string StoreCommand() const {
    return "vtdirect put " + QuotedForShell(kept_.file()) + " " + QuotedForShell(address_);
  }

  // Whatever has failed, nobody has to look for the file.
  [[nodiscard]] ExitCode FailWithPlace(Failure failure) {
    const bool isKept = HasUnstored() && (goesOn_ || IsChanged());
    const std::string place = "what was edited is kept in " + kept_.file() + ", and " +
                              CommandToType("edit", address_) + " goes on with it";
    if (!isKept && !HasUnstored() && kept_.stage() == EditStage::Begun) kept_.Remove();
    if (failure.code == ExitCode::Interrupted) {
      if (isKept) host_.output().Warning(place);
      // Between two steps nobody else tells it.
      if (!isKept && kept_.stage() == EditStage::CheckedOut && IsCheckedOutHere()) {
        host_.output().Warning(address_ + " is checked out; " + CommandToType("undo", address_) +
                               " ends that");
      }
      return failure.code;
    }
    if (isKept) failure.advice += (failure.advice.empty() ? "" : "; ") + place;
    return host_.output().Fail(failure);
  }

  [[nodiscard]] ExitCode Report() {
    const bool isCheckedOut = IsCheckedOutHere();
    if (uid_.empty()) uid_ = document_;
    host_.output().Row({{"uid", uid_}}, {{"address", address_},
                                         {"uid", uid_},
                                         {"action", std::string(action_)},
                                         {"checked_in", checkedIn_},
                                         {"checked_out", isCheckedOut}});
    static_cast<void>(host_.output().Flush());
    const std::string what = checkedIn_                         ? "stored and checked in "
                             : std::string(action_) == "stored" ? "stored "
                                                                : "nothing was changed in ";
    host_.output().Note(what + address_ + (isCheckedOut ? "; it is checked out, as it was before" : ""));
    return ExitCode::Ok;
  }

  Host& host_;
  std::string address_;
  std::string document_;
  std::string metadata_;
  KeptEdit kept_;
  std::string fetched_;  // SHA-256
  std::string uid_;      // to go on with
  const char* action_ = "unchanged";
  bool goesOn_ = false;
  bool checkedIn_ = false;
};

[[nodiscard]] std::string ChosenEditor() {
  const std::string visual = Environment("VISUAL");
  return visual.empty() ? Environment("EDITOR") : visual;
}

// What names the document whichever of its iterations is the newest, and whichever nickname its server has. An edit
// that is gone on with later must be found after others have stored something. Makes a request for an address by id.
[[nodiscard]] std::string LastingName(const std::string& address, AddressKind kind,
                                      const std::string& document) {
  const auto kept = CheckoutBook().Find(document);
  const std::string& placed = !IsById(address, kind) ? address : kept ? kept->document : document;
  const std::string path = VtDirectManager::GetVFSPathLatest(placed.c_str());
  const std::size_t server = path.find("//");
  if (server == std::string::npos) return document;
  return VtDirectManager::GetServerURL(path.c_str()) +
         path.substr(std::min(path.find('/', server + 2), path.size()));
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
  const std::string name = SafeFileName(FileNameOf(document));
  auto kept = KeptEdit::Open(LastingName(address, *kind, document), name.empty() ? "content" : name);
  if (!kept) return host.output().Fail(kept.failure());
  return Editing(host, address, document, arguments.Text("metadata"), std::move(*kept)).Run(editor);
}

}  // namespace

CommandRow EditCommand() {
  return {"edit",
          "Edit a document in your editor",
          "Checks the document at ADDRESS out, fetches it, opens it in the editor that VISUAL names, else "
          "EDITOR, and waits until that ends. Then it stores what was edited and checks it in; when nothing "
          "was changed it undoes the checkout. Prints the UID to go on with.\n\n"
          "A document that vtdirect has checked out before (see checkouts) is edited in its working copy, "
          "and stays checked out. Like put, an edit keeps the document's links. Metadata is of one iteration "
          "and can't be fetched: without --metadata the new iteration has none, and a warning says so where "
          "the server takes metadata at all.\n\n"
          "The file lies in $XDG_STATE_HOME/vtdirect/edits or ~/.local/state/vtdirect/edits until the server "
          "has what is in it. Whatever fails, also when the program is killed, it stays there, the failure "
          "says where, and the same command goes on with it; unless the server has a newer version by then, "
          "which is a conflict.\n\n"
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
