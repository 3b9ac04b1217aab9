#include "hosts/cli/editing/editing.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>

#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/checkouts/presence.h"
#include "hosts/cli/checkouts/recovery.h"
#include "hosts/cli/editing/edit_steps.h"
#include "hosts/cli/editing/edited_copy.h"
#include "hosts/cli/editing/foreground_program.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/sha256.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/program/interruption_report.h"
#include "hosts/cli/texts/output.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

// The status by which a shell says that there is no such program.
constexpr int notFoundByShell = 127;

class Editing {
 public:
  Editing(Host& host, EditRequest request, KeptEdit kept)
      : host_(host),
        address_(std::move(request.address)),
        document_(std::move(request.document)),
        metadata_(std::move(request.metadata)),
        kept_(std::move(kept)),
        state_(kept_.state()) {}

  [[nodiscard]] ExitCode Run(const std::string& editor) {
    DropUnedited();
    goesOn_ = HasUnstored();
    auto failure = goesOn_ ? RefusalToGoOn() : std::nullopt;
    if (!failure) failure = CheckOut();
    if (!failure) failure = goesOn_ ? LookBeforeGoingOn() : Fetch();
    if (!failure) failure = Edit(editor);
    if (!failure) failure = InFile() == FileContent::Changed ? Store() : End();
    if (failure) return FailWithPlace(*failure);
    Remove();
    return Report();
  }

 private:
  enum class FileContent {
    Unchanged,
    Changed,
    Lost  ///< not there, or can't be read
  };

  // A file that an edit has left as it came from its own checkout is on the server, in the iteration before that. By
  // what is recorded of it, it may look edited: a store from elsewhere has replaced what the working copy had.
  void DropUnedited() const {
    const std::string sum = Sha256OfFile(kept_.file());
    const std::string known = kept_.KnownSum();
    if (!sum.empty() && sum == state_.sum && (known.empty() || known == sum)) kept_.Drop();
  }

  // What was edited before was made from another version, so somebody's work would go if it were stored.
  [[nodiscard]] std::optional<Failure> RefusalToGoOn() {
    host_.output().Note("going on with the edit that is kept in " + kept_.file());
    // Another checkout than that one may have begun with a newer version.
    if (AreSameUid(WorkingCopy(), state_.workingCopy)) return std::nullopt;
    ForgetReasons();
    const auto state = AskForNewest(document_);
    if (!state) return Diagnose(host_, address_, Seen::Unknown);
    const std::string& newest = state->newestVersion;
    const std::string known = state_.version.empty() ? kept_.KnownVersion() : state_.version;
    if (known.empty() || newest.empty() || known == newest) return std::nullopt;
    return ConflictFailure(
        "what was edited was made from version " + known + ", and the server has version " + newest,
        "move the file away to edit the new version; ");
  }

  [[nodiscard]] Failure ConflictFailure(const std::string& what, const std::string& advice) const {
    return {ExitCode::Failure, "conflict: " + what, advice + StoreCommand() + " stores it all the same",
            std::nullopt, FailureClass::Conflict};
  }

  // Metadata is of one iteration, and there is no way to fetch it, so what the document has can't be stored again.
  void WarnOfMetadata() {
    if (!metadata_.empty() || !VtDirectManager::SupportsVCSMetadata(address_.c_str())) return;
    host_.output().Warning(
        "if " + address_ +
        " had metadata, what was stored now has none; give --metadata FILE to store it too");
    ForgetReasons();
  }

  [[nodiscard]] bool IsCheckedOutHere() const { return CheckoutBook().Find(document_).has_value(); }

  // Empty if the document is not checked out.
  [[nodiscard]] std::string WorkingCopy() const {
    const auto checkout = CheckoutBook().Find(document_);
    return checkout ? checkout->uid : copy_;
  }

  // Whether the server may lack what is in the file.
  [[nodiscard]] bool HasUnstored() const {
    const auto checkout = CheckoutBook().Find(document_);
    return kept_.HasUnstored(checkout ? checkout->uid : "");
  }

  [[nodiscard]] std::optional<Failure> CheckOut() {
    wasKept_ = IsCheckedOutHere();
    if (!wasKept_) {
      const StepResult step = CheckOutToEdit(host_, address_);
      if (step.failure) return step.failure;
      isNew_ = true;
      copy_ = step.uid;
      wasKept_ = IsCheckedOutHere();
    }
    copy_ = WorkingCopy();
    // A workspace of the user's own may call each of its copies of a document the same.
    if (!isNew_ && AreSameUid(copy_, state_.workingCopy)) return std::nullopt;
    if (!goesOn_) state_.version.clear();
    state_.workingCopy = copy_;
    state_.sum.clear();
    KeepStage(isNew_ ? EditStage::CheckedOut : EditStage::Begun);
    return std::nullopt;
  }

  void KeepStage(EditStage stage) {
    state_.stage = stage;
    if (state_.version.empty()) state_.version = kept_.KnownVersion();
    const std::string fault = kept_.Keep(state_);
    if (fault.empty()) return;
    host_.output().Warning(
        "how far the edit has come is not kept, so a second one would not end its checkout: " + fault);
  }

  [[nodiscard]] std::optional<Failure> Fetch() {
    const StepResult step = FetchToEdit(host_, address_, kept_.file());
    if (step.failure) {
      static_cast<void>(UndoAfterFailure());
      return step.failure;
    }
    onServer_ = Sha256OfFile(kept_.file());
    if (isNew_) state_.sum = onServer_;
    state_.version = kept_.KnownVersion();
    KeepStage(state_.stage);
    return std::nullopt;
  }

  // What is kept goes out from what the server had then. It may have got what is in the file as well, in a store whose
  // answer was lost.
  [[nodiscard]] std::optional<Failure> LookBeforeGoingOn() {
    ForgetReasons();
    onServer_ = SumOnServer(host_, ByOwnId(copy_));
    if (onServer_.empty()) {
      return PresenceOfWorkingCopy(copy_) == Presence::Gone ? CheckoutEnded() : NotFoundOut();
    }
    if (isNew_) {
      state_.sum = onServer_;
      KeepStage(state_.stage);
      return std::nullopt;
    }
    for (const std::string& known : {state_.sum, kept_.KnownSum(), Sha256OfFile(kept_.file())}) {
      if (known == onServer_) return std::nullopt;
    }
    return HasBaseAlone() ? std::nullopt : std::optional(AnotherStored());
  }

  // Another checkout than that of the edit, in which nothing has been stored yet.
  [[nodiscard]] bool HasBaseAlone() {
    const auto checkout = CheckoutBook().Find(document_);
    if (!checkout || !state_.sum.empty()) return false;
    return SumOnServer(host_, ByDocumentId(checkout->document)) == onServer_;
  }

  [[nodiscard]] Failure AnotherStored() const {
    return ConflictFailure(
        "something else was stored in the working copy " + copy_ + " since the file was fetched", "");
  }

  [[nodiscard]] Failure NotFoundOut() const {
    if (Interrupted()) return InterruptedFailure();
    return WithReason(
        {ExitCode::Failure, WithWords("what is in the working copy " + copy_ + " could not be found out") +
                                "; nothing was stored, and " + address_ + " stays checked out"});
  }

  [[nodiscard]] std::optional<Failure> Edit(const std::string& editor) {
    if (Interrupted()) return InterruptedFailure();
    InterruptionReport report(host_, "edit");
    report.Tell(address_ + " is checked out, and what was edited is in " + kept_.file() + "; " +
                CommandToType("edit", address_) + " goes on with it");
    host_.output().Note("editing " + kept_.file());
    const auto others = kept_.OtherFiles();
    const int status = RunInForeground(editor, {kept_.file()});
    const auto left = kept_.OtherFiles();
    hasLeftOthers_ = !std::includes(others.begin(), others.end(), left.begin(), left.end());
    const FileContent content = InFile();
    if (status == 0) return FailureOfLeft(content);
    const bool isUndone = content == FileContent::Unchanged && !hasLeftOthers_ && UndoAfterFailure();
    const std::string now =
        isUndone ? "; nothing was stored, and the checkout was undone" : "; nothing was stored";
    return Failure{ExitCode::Failure,
                   "the editor " + Printable(editor) + EndOfEditor(status) + now + PlaceOfOthers(),
                   status == notFoundByShell ? "set VISUAL or EDITOR" : ""};
  }

  // An editor may have saved what was edited under another name, and one that crashed leaves a file to recover it from.
  [[nodiscard]] std::optional<Failure> FailureOfLeft(FileContent content) const {
    const bool isLost = content == FileContent::Lost;
    if (!isLost && (content == FileContent::Changed || !hasLeftOthers_)) return std::nullopt;
    const std::string what = isLost ? "the editor has left no file " + kept_.file() + " that can be read"
                                    : "the editor has not changed the file";
    const std::string store =
        hasLeftOthers_ ? "\"vtdirect put FILE " + QuotedForShell(address_) + "\" stores one of them, and "
                       : "";
    return Failure{ExitCode::LocalFile,
                   what + "; nothing was stored, and " + address_ + " stays checked out" + PlaceOfOthers(),
                   store + CommandToType("undo", address_) + " gives the checkout up"};
  }

  [[nodiscard]] std::string PlaceOfOthers() const {
    return hasLeftOthers_ ? "; what it has left is in " + kept_.place() : "";
  }

  [[nodiscard]] static std::string EndOfEditor(int status) {
    if (status < 0) return " can't be started";
    return status == notFoundByShell ? " was not found" : " ended with status " + std::to_string(status);
  }

  [[nodiscard]] FileContent InFile() const {
    const std::string sum = Sha256OfFile(kept_.file());
    if (sum.empty()) return FileContent::Lost;
    const bool isChanged = sum != onServer_ || (goesOn_ && HasUnstored());
    return isChanged ? FileContent::Changed : FileContent::Unchanged;
  }

  // Of another working copy than its own the edit ends nothing.
  [[nodiscard]] EditStage Stage() const {
    return AreSameUid(WorkingCopy(), state_.workingCopy) ? state_.stage : EditStage::Begun;
  }

  // Another terminal may have ended it while the editor was open.
  [[nodiscard]] bool HasCheckoutEnded() const { return wasKept_ && !IsCheckedOutHere(); }

  [[nodiscard]] Failure CheckoutEnded() const {
    const std::string advice = IsCheckedOutHere() ? CommandToType("undo", copy_) + " clears it away" : "";
    return {ExitCode::Failure, "the checkout " + copy_ + " has ended; nothing was stored", advice,
            std::nullopt, FailureClass::Conflict};
  }

  [[nodiscard]] std::optional<Failure> RefusalToStore() {
    copy_ = WorkingCopy();
    if (HasCheckoutEnded()) return CheckoutEnded();
    switch (LookIntoCopy(host_, copy_, {onServer_})) {
      case CopyContent::AsKnown:
        return std::nullopt;
      case CopyContent::Another:
        return AnotherStored();
      case CopyContent::Gone:
        return CheckoutEnded();
      default:
        return NotFoundOut();
    }
  }

  [[nodiscard]] std::optional<Failure> Store() {
    if (auto failure = RefusalToStore()) return failure;
    action_ = "stored";
    const EditStage stage = Stage();
    const bool checkIn = stage != EditStage::Begun;
    KeepStage(checkIn ? EditStage::Storing : stage);
    const StepResult step = StoreEdited(host_, address_, {kept_.file(), metadata_}, checkIn);
    if (step.failure) return Settle(step);
    WarnOfMetadata();
    return checkIn ? SettleCheckIn(step) : Settle(step);
  }

  [[nodiscard]] std::optional<Failure> Settle(const StepResult& step) {
    uid_ = step.uid;
    // What became of it is not known, so no other run may take the file for stored.
    if (step.failure && step.failure->code == ExitCode::Incomplete) kept_.CountAsUnstored();
    return step.failure;
  }

  // A check-in makes an iteration with an id of its own. An answer that names none may be of a proxy.
  [[nodiscard]] std::optional<Failure> SettleCheckIn(const StepResult& step) {
    if (auto failure = Settle(step)) return failure;
    const bool isTold = HasObjectId(uid_) && !AreSameUid(uid_, copy_) && !AreSameUid(uid_, ByOwnId(copy_)) &&
                        !AreSameUid(uid_, document_);
    if (!isTold) {
      const auto newest = IterationWith(host_, document_, copy_, Sha256OfFile(kept_.file()));
      if (!newest) {
        kept_.CountAsUnstored();
        return Failure{ExitCode::Incomplete,
                       "what was edited was stored in the working copy " + copy_ +
                           ", and whether it is checked in is not known: the answer named no document",
                       CommandToType("verify", copy_) + " tells"};
      }
      uid_ = *newest;
    }
    checkedIn_ = true;
    return std::nullopt;
  }

  // Nothing was edited. What an earlier run has stored is checked in, as it would have been then.
  [[nodiscard]] std::optional<Failure> End() {
    copy_ = WorkingCopy();
    const EditStage stage = Stage();
    if (stage == EditStage::Storing) {
      action_ = "stored";
      return SettleCheckIn(CheckInEdited(host_, address_));
    }
    if (stage == EditStage::Begun || HasCheckoutEnded()) return std::nullopt;
    switch (LookIntoCopy(host_, copy_, {state_.sum})) {
      case CopyContent::AsKnown:
      case CopyContent::Gone:
        return Settle(UndoUnedited(host_, address_));
      case CopyContent::Another:
        host_.output().Warning("something " + std::string(state_.sum.empty() ? "may have been" : "was") +
                               " stored in the working copy " + copy_ + " since " + address_ +
                               " was checked out to edit it, so the checkout was not undone; " +
                               CommandToType("checkin", copy_) + " checks that in");
        return std::nullopt;
      default:
        return NotFoundOut();
    }
  }

  // Nobody has had a checkout of this run's to store in before its file was fetched.
  [[nodiscard]] bool MayUndo() {
    if (isNew_ && onServer_.empty()) return true;
    return LookIntoCopy(host_, copy_, {state_.sum}) == CopyContent::AsKnown;
  }

  // The checkout that was made for an edit that did not come to be. Its own failure is told beside the other.
  // Returns whether it was undone.
  bool UndoAfterFailure() {
    if (Stage() != EditStage::CheckedOut || goesOn_ || Interrupted()) return false;
    if (!MayUndo()) {
      host_.output().Warning(address_ + " is still checked out: something may have been stored in " + copy_);
      return false;
    }
    const StepResult step = UndoUnedited(host_, address_);
    if (step.failure) {
      host_.output().Warning(address_ + " is still checked out: " + step.failure->Text());
      return false;
    }
    Remove();
    return true;
  }

  void Remove() {
    if (!kept_.Remove()) return;
    host_.output().Warning("what the editor has left beside the file stays in " + kept_.place());
  }

  [[nodiscard]] std::string StoreCommand() const {
    return "vtdirect put " + QuotedForShell(kept_.file()) + " " + QuotedForShell(address_);
  }

  // Whatever has failed, nobody has to look for the file.
  [[nodiscard]] ExitCode FailWithPlace(Failure failure) {
    const bool isKept = HasUnstored() && (goesOn_ || InFile() != FileContent::Unchanged);
    std::string place = "what was edited is kept in " + kept_.file();
    if (failure.failureClass != FailureClass::Conflict)
      place += ", and " + CommandToType("edit", address_) + " goes on with it";
    if (!isKept && !HasUnstored() && !hasLeftOthers_ && Stage() == EditStage::Begun) Remove();
    if (failure.code == ExitCode::Interrupted) {
      if (isKept) host_.output().Warning(place);
      // Between two steps nobody else tells it.
      if (!isKept && Stage() == EditStage::CheckedOut && IsCheckedOutHere()) {
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
    const char* const since = state_.stage == EditStage::Begun ? ", as it was before" : "";
    host_.output().Note(what + address_ + (isCheckedOut ? std::string("; it is checked out") + since : ""));
    return ExitCode::Ok;
  }

  Host& host_;
  std::string address_;
  std::string document_;
  std::string metadata_;
  KeptEdit kept_;
  EditState state_;
  std::string copy_;      // UID of the working copy
  std::string onServer_;  // SHA-256 of what that had when the editor was started
  std::string uid_;       // to go on with
  const char* action_ = "unchanged";
  bool goesOn_ = false;
  bool isNew_ = false;    // this run has checked the document out
  bool wasKept_ = false;  // and its working copy was in the book
  bool hasLeftOthers_ = false;
  bool checkedIn_ = false;
};

}  // namespace

ExitCode EditKept(Host& host, const EditRequest& request, KeptEdit kept, const std::string& editor) {
  return Editing(host, request, std::move(kept)).Run(editor);
}

}  // namespace vtdirect_cli
