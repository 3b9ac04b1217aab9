#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/journaled_step.h"
#include "hosts/cli/checkouts/standing.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/diagnosis.h"
#include "hosts/cli/host.h"
#include "hosts/cli/interruption_report.h"
#include "hosts/cli/reasons.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::VtCheckoutStatus;

struct Verification {
  std::string address;
  std::string workingCopy;
  std::optional<KeptCheckout> kept;
  VtCheckoutStatus status = VtDirectManager::CheckoutStatusFailed;
  std::string user;
  std::string uid;  // to go on with
  bool isKept = false;

  // Without its workspace the UID is none to go on with.
  [[nodiscard]] bool stands() const { return HasWorkspace(uid) && IsWorkingCopy(status); }
  [[nodiscard]] bool renewed() const { return stands() && !AreSameUid(uid, workingCopy); }
  // Nobody holds the document any more, and there is no newer iteration: the copy was thrown away.
  [[nodiscard]] bool isGone() const {
    return IsTemporaryCopy(workingCopy) && status == VtDirectManager::CheckoutNone;
  }
};

[[nodiscard]] std::string WordsOf(const Verification& found) {
  switch (found.status) {
    case VtDirectManager::CheckoutInTempWorkspace:
      return "is checked out by you, in a temporary workspace";
    case VtDirectManager::CheckoutInWorkspace:
      if (found.stands()) return "is checked out by you, in a workspace of yours";
      return "is checked out by you, and its working copy is not kept here; give the UID of that, or its "
             "path, "
             ".../Workspaces/NAME/FILE";
    case VtDirectManager::CheckoutByUserUnrecorded:
      return "is checked out by you, but in another working copy than this";
    case VtDirectManager::CheckoutByOther:
      return "is checked out by " + found.user;
    case VtDirectManager::CheckoutNotPossible:
      return "is not checked out, and has a newer iteration";
    default:
      return "is not checked out";
  }
}

// A checkout that was checked in by other means is kept by an iteration that the document's path leads to no
// more.
[[nodiscard]] std::optional<KeptCheckout> KeptOfOlderIteration(const std::string& uid) {
  for (const KeptCheckout& kept : CheckoutBook().Read().checkouts) {
    if (kept.name != VtDirectManager::GetFileName(uid.c_str())) continue;
    if (AreSameUid(VtDirectManager::GetLatestUPath(kept.document.c_str()), uid)) return kept;
  }
  return std::nullopt;
}

// What another user of this home has checked out is theirs, and is not dropped.
[[nodiscard]] std::optional<Failure> RefusalOfAnothers(const Verification& found) {
  if (!found.kept || found.kept->user.empty() || found.status != VtDirectManager::CheckoutByOther ||
      found.user != found.kept->user) {
    return std::nullopt;
  }
  return Failure{ExitCode::Failure,
                 "the checkout of " + found.address + " is kept for " + found.user +
                     ", and you are somebody else at the server; nothing was changed; give "
                     "the credentials of " +
                     found.user};
}

// A working copy in a workspace of the user's own is asked for by its own id, which ends with it. What stands
// then is what its document tells; while the user has that checked out, the working copy may be there still.
[[nodiscard]] bool ReadFromDocument(Verification& found) {
  if (!found.kept || IsTemporaryCopy(found.workingCopy)) return false;
  found.uid = found.kept->document;
  found.status = VtDirectManager::GetCheckoutStatus(found.uid.c_str(), &found.user);
  return HasEnded(found.status);
}

// The library confirms only what is a checkout in a workspace of the user's own, and tells nothing of the
// rest.
[[nodiscard]] bool ReadAsDocument(Verification& found) {
  if (IsTemporaryCopy(found.workingCopy)) return false;
  found.uid = found.workingCopy;
  found.status = VtDirectManager::GetCheckoutStatus(found.uid.c_str(), &found.user);
  return HasEnded(found.status);
}

[[nodiscard]] Failure NotFoundOut(const Verification& found) {
  return {ExitCode::Failure,
          "where the checkout of " + found.address +
              " stands could not be found out; nothing was changed; the same command can be "
              "given again"};
}

[[nodiscard]] std::optional<Failure> WhyUnknown(Host& host, Verification& found) {
  if (auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(found.workingCopy.c_str()))) {
    return failure;
  }
  const Presence presence = PresenceOf(found.workingCopy);
  if (presence == Presence::There && ReadAsDocument(found)) return std::nullopt;
  if (presence != Presence::There && ReadFromDocument(found)) return std::nullopt;
  const bool mayBeACopy = found.kept || HasWorkspace(found.workingCopy);
  if (presence != Presence::Gone && mayBeACopy) return NotFoundOut(found);
  std::string message = "not found: " + found.address;
  if (found.kept) message += "; " + CommandToType("checkouts --forget", found.workingCopy) + " drops it";
  return Failure{ExitCode::NotFound, message};
}

// By reads alone: the library's own confirmation would throw a temporary checkout away and make another when
// one of its questions fails.
void AskOfTemporaryCopy(Verification& found) {
  const CheckoutState state = StandingOfTemporaryCopy(found.workingCopy);
  found.status = state.status;
  found.user = state.user;
  const bool isCopy = state.status == VtDirectManager::CheckoutInTempWorkspace;
  found.uid = isCopy ? found.workingCopy : ByDocumentId(found.workingCopy);
}

[[nodiscard]] std::optional<Failure> Ask(Host& host, Verification& found) {
  if (IsTemporaryCopy(found.workingCopy)) {
    AskOfTemporaryCopy(found);
  } else {
    // Of any other working copy the library only reads.
    found.status = VtDirectManager::VerifyCheckout(found.workingCopy.c_str(), found.uid);
  }
  if (found.status == VtDirectManager::CheckoutStatusFailed) {
    if (auto failure = WhyUnknown(host, found)) return failure;
  }
  if (found.status == VtDirectManager::CheckoutByOther && found.user.empty()) {
    static_cast<void>(VtDirectManager::GetCheckoutStatus(found.uid.c_str(), &found.user));
  }
  if (found.status == VtDirectManager::CheckoutNotPossible) {
    const std::string newest = VtDirectManager::GetLatestUPath(found.uid.c_str());
    if (HasObjectId(newest)) found.uid = newest;
  }
  return RefusalOfAnothers(found);
}

// Checks the document out anew. The server has said that nobody holds it.
[[nodiscard]] std::optional<Failure> Renew(Host& host, Verification& found, InterruptionReport& report) {
  report.TellOfOpenChange("whether " + found.address + " is checked out anew is not known; " +
                          CommandToType("status", found.uid) + " tells");
  JournaledStep step(host, {{}, {}, "checkout", found.address, found.uid, {}, {}});
  const std::string uid = CheckOutDocument(found.uid);
  if (uid.empty()) {
    step.SettleUnlessUnknown();
    return CheckoutFailure(host, found.address, found.uid);
  }
  report.Tell(found.address + " is checked out anew; its working copy is " + uid);
  static_cast<void>(KeepCheckout(host, found.kept ? found.kept->document : found.uid, uid));
  step.Settle();
  found.uid = uid;
  found.status = VtDirectManager::CheckoutInTempWorkspace;
  return std::nullopt;
}

void UpdateBook(Host& host, Verification& found) {
  if (found.stands()) {
    found.isKept = KeepCheckout(host, found.kept ? found.kept->document : found.workingCopy, found.uid);
  } else if (found.kept && HasEnded(found.status) && !found.isGone()) {
    // What is gone can still be renewed, and what is left of its workspace be cleared away.
    ForgetCheckout(host, found.workingCopy);
  } else {
    found.isKept = found.kept.has_value();
  }
}

void Print(Host& host, const Verification& found) {
  Record record{{"address", found.address},
                {"uid", found.uid},
                {"checkout", std::string(CheckoutWord(found.status))},
                {"renewed", found.renewed()},
                {"kept", found.isKept}};
  if (found.status == VtDirectManager::CheckoutByOther) record.emplace_back("checked_out_by", found.user);
  host.output().Row({{"uid", found.uid}}, record);
  static_cast<void>(host.output().Flush());
}

[[nodiscard]] Failure NotStanding(const Verification& found) {
  std::string message = found.address + " " + WordsOf(found);
  if (found.isGone()) {
    message += "; the working copy " + found.workingCopy + " is gone, with all that was not checked in; " +
               CommandToType("verify --renew", found.address) + " checks the document out anew";
  } else if (found.kept && !found.isKept) {
    message += "; the checkout that was kept does not stand any more, and is dropped";
    if (IsTemporaryCopy(found.workingCopy) && found.status == VtDirectManager::CheckoutNotPossible) {
      message += "; " + CommandToType("undo", found.workingCopy) +
                 " clears away what may be left of its temporary workspace";
    }
  }
  return {ExitCode::Failure, message};
}

[[nodiscard]] ExitCode Report(Host& host, const Verification& found) {
  Print(host, found);
  if (!found.stands()) return host.output().Fail(NotStanding(found));
  host.output().Note(found.address + " " + WordsOf(found));
  if (found.renewed()) {
    host.output().Warning("the working copy " + found.workingCopy +
                          " was gone, with all that was not checked in; the document was checked out anew");
  }
  return ExitCode::Ok;
}

ExitCode RunVerify(Host& host, const Arguments& arguments) {
  Verification found;
  found.address = arguments.Text("ADDRESS");
  const auto kind = RequireAddress(found.address);
  if (!kind) return host.output().Fail(kind.failure());

  InterruptionReport report(host, "verify");
  ForgetReasons();
  auto refusal = FindWorkingCopy(host, found.address, found.workingCopy);
  if (!refusal && found.workingCopy.empty()) refusal = Diagnose(host, found.address, true);
  if (refusal) return report.Fail(*refusal);
  found.kept = CheckoutBook().Find(found.workingCopy);
  if (!found.kept) found.kept = KeptOfOlderIteration(found.workingCopy);
  if (found.kept) found.workingCopy = found.kept->uid;
  report.Tell("where the checkout stands is not known; the same command can be given again");
  auto failure = Ask(host, found);
  if (!failure && arguments.Has("renew") && found.isGone() && !Interrupted()) {
    failure = Renew(host, found, report);
  }
  if (failure) return report.Fail(*failure);
  report.Tell("the UID to go on with is " + found.uid);
  UpdateBook(host, found);
  const ExitCode code = Report(host, found);
  return Interrupted() ? report.Report() : code;
}

}  // namespace

CommandRow VerifyCommand() {
  return {
      "verify",
      "Confirm that a checkout still stands",
      "Asks the server whether the working copy at ADDRESS still stands, and prints the UID to go on "
      "with. ADDRESS is that of the working copy, or of a document that is checked out by vtdirect (see "
      "checkouts). Nothing is changed on the server.\n\n"
      "When the server says that the working copy in a temporary workspace is gone and that nobody holds the "
      "document, --renew checks it out anew, which gives another UID. What was stored and not checked in is "
      "lost by then, and a warning says so. A question that fails is no such answer.\n\n"
      "Where the checkout doesn't stand, the exit status is 1, standard error tells what does, and the "
      "UID is the document's. What is kept is brought up to date: a checkout that stands is kept, and one "
      "that has ended otherwise is dropped.",
      {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
      {{"renew", 0, nullptr, false, Completion::Nothing,
        "Check the document out anew when its working copy is gone."}},
      true,
      RunVerify,
      {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
       {"uid", MemberType::Text, nullptr, "the UID to go on with"},
       {"checkout", MemberType::Text, nullptr, "where the checkout stands; see status"},
       {"renewed", MemberType::Flag, nullptr, "whether the document was checked out anew"},
       {"kept", MemberType::Flag, nullptr, "whether the UID is kept now"},
       {"checked_out_by", MemberType::Text, "when somebody else holds it", "who does"}}};
}

}  // namespace vtdirect_cli
