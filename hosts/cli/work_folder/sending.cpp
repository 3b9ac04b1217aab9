#include "hosts/cli/work_folder/sending.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>

#include "hosts/cli/checkouts/checkin_answer.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_end.h"
#include "hosts/cli/checkouts/journaled_step.h"
#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/checkouts/presence.h"
#include "hosts/cli/checkouts/recovery.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/checkouts/unstored_copy.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/content_download.h"
#include "hosts/cli/files/sha256.h"
#include "hosts/cli/program/interruption_report.h"
#include "hosts/cli/storing/put_failure.h"
#include "hosts/cli/storing/put_links.h"
#include "hosts/cli/storing/put_target.h"
#include "hosts/cli/storing/put_upload.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/local_files.h"

namespace vtdirect_cli {
namespace {

/// One file on its way.
class Sending {
 public:
  Sending(Host& host, WorkFolder& folder, const FolderFile& file)
      : host_(host), folder_(folder), file_(file), report_(host, "commit") {}

  [[nodiscard]] SendResult Send() {
    report_.Tell(Named("is as it was on the server"));
    auto failure = FindOrMakeWorkingCopy();
    if (!failure) failure = Store();
    if (!failure) failure = CheckIn();
    if (failure && failure->code == ExitCode::Interrupted) report_.Report();
    if (failure) return {.sent = false, .failure = failure};
    return {.sent = true, .file = KeepSent()};
  }

 private:
  [[nodiscard]] std::string Named(const std::string& what) const {
    return Printable(folder_.Shown(file_.path)) + " " + what;
  }

  [[nodiscard]] std::optional<Failure> FindOrMakeWorkingCopy() {
    const auto kept = CheckoutBook().Find(file_.uid);
    if (kept) {
      workingCopy_ = kept->uid;
      return std::nullopt;
    }
    if (auto failure = CheckOut()) return failure;
    return RefuseIfNotNewest();
  }

  [[nodiscard]] std::optional<Failure> CheckOut() {
    ForgetReasons();
    if (auto refusal = RefusalOfCheckout(host_, file_.address, file_.uid)) return refusal;
    if (Interrupted()) return InterruptedFailure();
    report_.TellOfOpenChange(Named("was not sent, and whether its document is checked out is not known; ") +
                             CommandToType("status", file_.address) + " tells");
    JournaledStep step(host_, {"checkout", file_.address, file_.uid});
    workingCopy_ = CheckOutDocument(file_.uid);
    if (workingCopy_.empty()) {
      step.SettleUnlessUnknown();
      if (Interrupted()) return InterruptedFailure();
      return CheckoutFailure(host_, file_.address, file_.uid);
    }
    static_cast<void>(KeepCheckout(host_, file_.uid, workingCopy_));
    step.Settle();
    report_.Tell(Named("was not sent; its document is checked out, and its working copy is ") + workingCopy_);
    madeCheckout_ = true;
    return std::nullopt;
  }

  // Between the listing and the checkout somebody may have been faster. From now on nobody can be.
  [[nodiscard]] std::optional<Failure> RefuseIfNotNewest() {
    const auto state = AskForNewest(file_.uid);
    if (state && state->isNewest()) return std::nullopt;
    if (Interrupted()) return InterruptedFailure();
    const auto reason = LastReason();
    Undo();
    if (Interrupted()) return InterruptedFailure();
    if (state) return ConflictOf(folder_.Shown(file_.path), file_.version, state->newestVersion);
    return Failure{ExitCode::CannotConnect,
                   Named("was not sent: whether its document has a newer version could not be found out"),
                   "the same command can be given again", reason};
  }

  void Undo() {
    report_.TellOfOpenChange(Named("was not sent, and whether its checkout has ended is not known; ") +
                             CommandToType("undo", workingCopy_) + " ends it");
    if (const auto failure = UndoOwnCheckout(host_, file_.address, workingCopy_)) {
      if (!Interrupted()) host_.output().Warning(failure->Text());
      return;
    }
    report_.Tell(Named("is as it was on the server"));
  }

  // A checkout that was made for a file that is not sent after all stays, for the next try.
  [[nodiscard]] Failure NotSent(Failure failure) const {
    if (!madeCheckout_ || failure.code == ExitCode::Interrupted) return failure;
    failure.message += "; its document is checked out now";
    failure.advice += (failure.advice.empty() ? "" : "; ") + CommandToType("undo", workingCopy_) +
                      " ends the checkout, and a further commit goes on with it";
    return failure;
  }

  [[nodiscard]] std::optional<Failure> Store() {
    request_.address = workingCopy_;
    request_.kind = AddressKind::Uid;
    request_.checkIn = true;
    inspected_ = TimeNow();
    const auto source = InspectSource(folder_.OnDisk(file_.path));
    if (!source) return NotSent(source.failure());
    request_.content = *source;
    sha256_ = Sha256OfFile(request_.content.path);
    const auto target = SettlePutTarget(host_, request_);
    if (!target) return NotSent(target.failure());
    if (target->action != PutTarget::Action::Store) return NoWorkingCopy();
    const auto links = SettleLinks(host_, request_, *target);
    if (!links) return NotSent(links.failure());
    if (Interrupted()) return InterruptedFailure();
    if (auto failure = RefusalOfCopy(*target)) return NotSent(*failure);
    return Upload(*target, *links);
  }

  // What was stored in a working copy before this run is nowhere else once the file is in it.
  [[nodiscard]] std::optional<Failure> RefusalOfCopy(const PutTarget& target) const {
    if (madeCheckout_) return std::nullopt;
    if (auto failure = RefusalOfUnstored(file_.address, target.address, "sent")) return failure;
    ForgetReasons();
    const std::string there = SumOnServer(host_, target.before);
    if (Interrupted()) return InterruptedFailure();
    if (there.empty()) {
      return WithReason(
          {ExitCode::Failure,
           Named("was not sent: what is in its working copy, which was checked out before, could not "
                 "be found out"),
           "the same command can be given again"});
    }
    if (there == file_.sha256 || there == sha256_ || WasSentBefore(target, there)) return std::nullopt;
    return ConflictInCopy(target);
  }

  // By a commit whose check-in did not follow. The journal has one of which it is not known how it ended.
  [[nodiscard]] bool WasSentBefore(const PutTarget& target, const std::string& sha256) const {
    const auto record = FetchRecords().Find(request_.content.path);
    if (record && AreSameUid(record->uid, target.address) && record->sha256 == sha256) return true;
    const auto open = Journal().Open();
    if (!open) return false;
    return std::any_of(open->entries.begin(), open->entries.end(), [&](const JournalEntry& entry) {
      return entry.step == "store" && AreSameUid(entry.uid, target.address) &&
             entry.file == request_.content.path && entry.sha256 == sha256;
    });
  }

  [[nodiscard]] Failure ConflictInCopy(const PutTarget& target) const {
    const std::string& copy = target.address;
    const std::string file = QuotedForShell(folder_.Shown(file_.path));
    return {ExitCode::Failure,
            "conflict: " + Named("was made from version ") + file_.version +
                ", and something else was stored in the working copy " + copy + " since; nothing was sent",
            "\"vtdirect get " + QuotedForShell(copy) + " -o FILE\" fetches what is there; \"vtdirect put " +
                file + " " + QuotedForShell(copy) + " --checkin\" stores the file over it, and " +
                CommandToType("undo", copy) + " gives it up",
            std::nullopt, FailureClass::Conflict};
  }

  [[nodiscard]] Failure NoWorkingCopy() const {
    return {ExitCode::Failure, Named("was not sent: the checkout that is kept of it has ended"),
            CommandToType("verify", workingCopy_) + " tells the state of the checkout"};
  }

  [[nodiscard]] std::optional<Failure> Upload(const PutTarget& target, const SourceLinks& links) {
    JournaledStep step(host_, {"store", file_.address, target.address, request_.content.path, sha256_});
    const PutOutcome outcome = RunUpload(host_, request_, target, links, report_);
    if (outcome.stored) KeepWhatIsInCopy(target);
    if (!outcome.stored) {
      if (ChangeMayHaveHappened()) KeepWhatMayBeInCopy(target);
      step.SettleUnlessUnknown();
      if (Interrupted()) return InterruptedFailure();
      return PutFailure(host_, request_, target, outcome);
    }
    report_.Tell(Named("is stored in the working copy ") + target.address);
    step.Settle();
    workingCopy_ = target.address;
    auto failure = FailureOfLinks(host_, request_, workingCopy_, links, true);
    if (Interrupted()) return InterruptedFailure();
    return failure;
  }

  // So that a further commit knows the bytes for its own. What was in the working copy before is in it no more.
  void KeepWhatIsInCopy(const PutTarget& target) const {
    ForgetContentOf(target.address);
    FetchRecord record;
    record.address = file_.address;
    record.uid = target.address;
    record.size = request_.content.size();
    record.sha256 = sha256_;
    record.copyUse = CopyUse::Stored;
    static_cast<void>(FetchRecords().Keep(request_.content.path, record));
  }

  // The journal has what may be there now. What an earlier commit has stored may be there still.
  void KeepWhatMayBeInCopy(const PutTarget& target) const {
    const auto earlier = FetchRecords().Find(request_.content.path);
    ForgetContentOf(target.address);
    if (!earlier || !AreSameUid(earlier->uid, target.address)) return;
    static_cast<void>(FetchRecords().Keep(request_.content.path, *earlier));
  }

  [[nodiscard]] std::optional<Failure> CheckIn() {
    if (Interrupted()) return InterruptedFailure();
    report_.TellOfOpenChange(Named("is stored in the working copy ") + workingCopy_ +
                             ", and whether it is checked in is not known; " +
                             CommandToType("verify", workingCopy_) + " tells");
    ForgetReasons();
    JournaledStep step(host_, {"checkin", file_.address, workingCopy_});
    const std::string told = VtDirectManager::Checkin(workingCopy_.c_str());
    if (told.empty()) {
      step.SettleUnlessUnknown();
      if (Interrupted()) return InterruptedFailure();
      return PutCheckInFailure(host_, workingCopy_);
    }
    const CheckinAnswer answer = ReadCheckinAnswer(host_, told, workingCopy_, file_.uid, sha256_);
    WarnOfLeftWorkspace(host_);
    uid_ = answer.iteration;
    if (uid_.empty()) {
      if (Interrupted()) return InterruptedFailure();
      return UnknownCheckin(answer, Named("was stored in the working copy ") + workingCopy_);
    }
    FetchRecords().Forget(request_.content.path);
    ForgetCheckout(host_, workingCopy_);
    step.Settle();
    return std::nullopt;
  }

  // The bytes that were sent, which an editor may have gone on from.
  [[nodiscard]] FolderFile KeepSent() {
    report_.Tell(Named("is checked in; the UID to go on with is ") + uid_);
    FolderFile sent = file_;
    sent.uid = uid_;
    std::string newest;
    sent.version.clear();
    static_cast<void>(VtDirectManager::GetStatus(uid_.c_str(), sent.version, newest, nullptr));
    const struct stat& facts = request_.content.facts;
    sent.size = request_.content.size();
    sent.time = TimeToKeep(facts.st_mtim.tv_sec * 1'000'000'000 + facts.st_mtim.tv_nsec, inspected_);
    sent.sha256 = sha256_;
    const std::string fault = folder_.store().Keep(sent);
    if (!fault.empty()) {
      host_.output().Warning(Named("is checked in, and that is not kept here: ") + fault +
                             "; vtdirect pull finds out by itself");
    }
    return sent;
  }

  Host& host_;
  WorkFolder& folder_;
  const FolderFile& file_;
  InterruptionReport report_;
  PutRequest request_;
  std::string workingCopy_;
  bool madeCheckout_ = false;
  std::string sha256_;
  std::int64_t inspected_ = 0;  // when the file was looked at
  std::string uid_;
};

}  // namespace

SendResult SendFile(Host& host, WorkFolder& folder, const Comparison& changed) {
  return Sending(host, folder, *changed.file).Send();
}

Failure ConflictOf(const std::string& name, const std::string& base, const std::string& newest) {
  return {ExitCode::Failure,
          "conflict: " + Printable(name) + " was made from version " + base +
              ", and the server has version " + newest + "; nothing was sent",
          "vtdirect revert keeps your changes beside it, and vtdirect pull fetches the new version",
          std::nullopt, FailureClass::Conflict};
}

}  // namespace vtdirect_cli
