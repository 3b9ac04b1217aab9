#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/journaled_step.h"
#include "hosts/cli/checkouts/presence.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption_report.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::VtCheckoutStatus;

// What is asked about.
struct Subject {
  std::string address;
  std::string workingCopy;
  std::optional<KeptCheckout> kept;

  // The document as it was before the checkout, if that is known.
  [[nodiscard]] const std::string& document() const { return kept ? kept->document : workingCopy; }
};

// What the server says.
struct CopyState {
  VtCheckoutStatus status = VtDirectManager::CheckoutStatusFailed;
  std::string user;
  std::string uid;  // to go on with

  // Without its workspace the UID is none to go on with.
  [[nodiscard]] bool isThere() const { return HasWorkspace(uid) && IsWorkingCopy(status); }
};

struct Verification {
  Subject subject;
  CopyState state;
  bool isKept = false;

  [[nodiscard]] bool renewed() const {
    return state.isThere() && !AreSameUid(state.uid, subject.workingCopy);
  }
};

// Nobody holds the document any more, and there is no newer iteration: the copy was thrown away.
[[nodiscard]] bool IsGone(const Subject& subject, const CopyState& state) {
  return IsTemporaryCopy(subject.workingCopy) && state.status == VtDirectManager::CheckoutNone;
}

[[nodiscard]] std::string WordsOf(const CopyState& found) {
  switch (found.status) {
    case VtDirectManager::CheckoutInTempWorkspace:
      return "is checked out by you, in a temporary workspace";
    case VtDirectManager::CheckoutInWorkspace:
      if (found.isThere()) return "is checked out by you, in a workspace of yours";
      return "is checked out by you, and its working copy is not kept here; give the UID of that, or its "
             "path, .../Workspaces/NAME/FILE";
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
[[nodiscard]] std::optional<Failure> RefusalOfAnothers(const Subject& subject, const CopyState& state) {
  if (!subject.kept || subject.kept->user.empty() || state.status != VtDirectManager::CheckoutByOther ||
      state.user != subject.kept->user) {
    return std::nullopt;
  }
  return Failure{
      ExitCode::Failure,
      "the checkout of " + subject.address + " is kept for " + subject.kept->user +
          ", and you are somebody else at the server; nothing was changed; give the credentials of " +
          subject.kept->user};
}

[[nodiscard]] CopyState StateOf(const std::string& uid) {
  const CheckoutState state = ReadCheckoutState(uid);
  return {state.status, state.user, uid};
}

// The library confirms only what is a checkout in a workspace of the user's own, and tells nothing of the rest.
// Such a working copy is asked for by its own id, which ends with it; what is there then is what its document
// tells. While the user has that checked out, the working copy may be there still.
[[nodiscard]] std::optional<CopyState> EndOfOwnCopy(const Subject& subject, Presence presence) {
  if (IsTemporaryCopy(subject.workingCopy)) return std::nullopt;
  const bool isThere = presence == Presence::There;
  if (!isThere && !subject.kept) return std::nullopt;
  const CopyState state = StateOf(isThere ? subject.workingCopy : subject.kept->document);
  return HasEnded(state.status) ? std::optional(state) : std::nullopt;
}

[[nodiscard]] Failure NotFoundOut(const Subject& subject) {
  return {ExitCode::Failure,
          "the state of the checkout of " + subject.address +
              " could not be found out; nothing was changed; the same command can be given again"};
}

// The checkout was not confirmed: that it has ended, or why it is not known.
[[nodiscard]] Result<CopyState> AskWhyUnknown(Host& host, const Subject& subject) {
  if (auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(subject.workingCopy.c_str()))) {
    return *failure;
  }
  const Presence presence = PresenceOf(subject.workingCopy);
  if (const auto ended = EndOfOwnCopy(subject, presence)) return *ended;
  const bool mayBeACopy = subject.kept || HasWorkspace(subject.workingCopy);
  if (presence != Presence::Gone && mayBeACopy) return NotFoundOut(subject);
  std::string message = "not found: " + subject.address;
  if (subject.kept) message += "; " + CommandToType("checkouts --forget", subject.workingCopy) + " drops it";
  return Failure{ExitCode::NotFound, message};
}

// By reads alone: the library's own confirmation would throw a temporary checkout away and make another when
// one of its questions fails.
[[nodiscard]] CopyState AskOfTemporaryCopy(const std::string& workingCopy) {
  const CheckoutState state = StateOfTemporaryCopy(workingCopy);
  const bool isCopy = state.status == VtDirectManager::CheckoutInTempWorkspace;
  return {state.status, state.user, isCopy ? workingCopy : ByDocumentId(workingCopy)};
}

// Of any working copy that is not in a temporary workspace the library only reads.
[[nodiscard]] CopyState Confirm(const std::string& workingCopy) {
  if (IsTemporaryCopy(workingCopy)) return AskOfTemporaryCopy(workingCopy);
  const VtDirectManager::Outcome outcome;
  CopyState state;
  state.status = VtDirectManager::VerifyCheckout(workingCopy.c_str(), state.uid);
  if (AQuestionFailed(outcome)) return {};
  return state;
}

[[nodiscard]] Result<CopyState> Ask(Host& host, const Subject& subject) {
  CopyState state = Confirm(subject.workingCopy);
  if (state.status == VtDirectManager::CheckoutStatusFailed) {
    const auto ended = AskWhyUnknown(host, subject);
    if (!ended) return ended;
    state = *ended;
  }
  if (state.status == VtDirectManager::CheckoutByOther && state.user.empty()) {
    state.user = ReadCheckoutState(state.uid).user;
  }
  if (state.status == VtDirectManager::CheckoutNotPossible) {
    const std::string newest = VtDirectManager::GetLatestUPath(state.uid.c_str());
    if (HasObjectId(newest)) state.uid = newest;
  }
  if (auto refusal = RefusalOfAnothers(subject, state)) return *refusal;
  return state;
}

// Checks the document out anew. The server has said that nobody holds it.
[[nodiscard]] Result<CopyState> Renew(Host& host, const Subject& subject, const std::string& document,
                                      InterruptionReport& report) {
  report.TellOfOpenChange("whether " + subject.address + " is checked out anew is not known; " +
                          CommandToType("status", document) + " tells");
  JournaledStep step(host, {"checkout", subject.address, document});
  const std::string uid = CheckOutDocument(document);
  if (uid.empty()) {
    step.SettleUnlessUnknown();
    return CheckoutFailure(host, subject.address, document);
  }
  report.Tell(subject.address + " is checked out anew; its working copy is " + uid);
  static_cast<void>(KeepCheckout(host, subject.kept ? subject.kept->document : document, uid));
  step.Settle();
  return CopyState{VtDirectManager::CheckoutInTempWorkspace, {}, uid};
}

// Whether the checkout is kept from now on.
[[nodiscard]] bool UpdateBook(Host& host, const Subject& subject, const CopyState& state) {
  if (state.isThere()) return KeepCheckout(host, subject.document(), state.uid);
  // What is gone can still be renewed, and what is left of its workspace be cleared away.
  const bool isOver = HasEnded(state.status) && !IsGone(subject, state);
  if (!subject.kept || !isOver) return subject.kept.has_value();
  ForgetCheckout(host, subject.workingCopy);
  return false;
}

void Print(Host& host, const Verification& found) {
  const CopyState& state = found.state;
  Record record{{"address", found.subject.address},
                {"uid", state.uid},
                {"checkout", std::string(CheckoutWord(state.status))},
                {"renewed", found.renewed()},
                {"kept", found.isKept}};
  if (state.status == VtDirectManager::CheckoutByOther) record.emplace_back("checked_out_by", state.user);
  host.output().Row({{"uid", state.uid}}, record);
  static_cast<void>(host.output().Flush());
}

[[nodiscard]] Failure NotThere(const Verification& found) {
  const auto& [address, workingCopy, kept] = found.subject;
  std::string message = address + " " + WordsOf(found.state);
  if (IsGone(found.subject, found.state)) {
    message += "; the working copy " + workingCopy + " is gone, with all that was not checked in; " +
               CommandToType("verify --renew", address) + " checks the document out anew";
  } else if (kept && !found.isKept) {
    message += "; the checkout that was kept has ended, and is dropped";
    if (IsTemporaryCopy(workingCopy) && found.state.status == VtDirectManager::CheckoutNotPossible) {
      message += "; " + CommandToType("undo", workingCopy) +
                 " clears away what may be left of its temporary workspace";
    }
  }
  return {ExitCode::Failure, message};
}

[[nodiscard]] ExitCode Report(Host& host, const Verification& found) {
  Print(host, found);
  if (!found.state.isThere()) return host.output().Fail(NotThere(found));
  host.output().Note(found.subject.address + " " + WordsOf(found.state));
  if (found.renewed()) {
    host.output().Warning("the working copy " + found.subject.workingCopy +
                          " was gone, with all that was not checked in; the document was checked out anew");
  }
  return ExitCode::Ok;
}

[[nodiscard]] Result<Subject> FindSubject(Host& host, const std::string& address) {
  ForgetReasons();
  const auto workingCopy = FindWorkingCopy(host, address);
  if (!workingCopy) return workingCopy.failure();
  if (workingCopy->empty()) return Diagnose(host, address, Seen::Missing);
  Subject subject{address, *workingCopy, CheckoutBook().Find(*workingCopy)};
  if (!subject.kept) subject.kept = KeptOfOlderIteration(subject.workingCopy);
  if (subject.kept) subject.workingCopy = subject.kept->uid;
  return subject;
}

ExitCode RunVerify(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  const auto kind = RequireAddress(address);
  if (!kind) return host.output().Fail(kind.failure());

  InterruptionReport report(host, "verify");
  const auto subject = FindSubject(host, address);
  if (!subject) return report.Fail(subject.failure());
  report.Tell("the state of the checkout is not known; the same command can be given again");
  auto state = Ask(host, *subject);
  if (state && arguments.Has("renew") && IsGone(*subject, *state) && !Interrupted()) {
    state = Renew(host, *subject, state->uid, report);
  }
  if (!state) return report.Fail(state.failure());
  report.Tell("the UID to go on with is " + state->uid);
  const ExitCode code = Report(host, {*subject, *state, UpdateBook(host, *subject, *state)});
  return Interrupted() ? report.Report() : code;
}

}  // namespace

CommandRow VerifyCommand() {
  return {"verify",
          "Confirm that a checkout is still there",
          "Asks the server whether the working copy at ADDRESS is still there, and prints the UID to go on "
          "with. ADDRESS is that of the working copy, or of a document that is checked out by vtdirect (see "
          "checkouts). Nothing is changed on the server.\n\n"
          "When the server says that the working copy in a temporary workspace is gone and that nobody holds "
          "the document, --renew checks it out anew, which gives another UID. What was stored and not "
          "checked in is lost by then, and a warning says so. A question that fails is no such answer.\n\n"
          "Where it is not, the exit status is 1, standard error tells what is, and the UID is the "
          "document's. What is kept is brought up to date: a checkout that is still there is kept, and one "
          "that has ended otherwise is dropped.",
          {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
          {{.name = "renew", .help = "Check the document out anew when its working copy is gone."}},
          Requests::Some,
          RunVerify,
          {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
           {"uid", MemberType::Text, nullptr, "the UID to go on with"},
           {"checkout", MemberType::Text, nullptr, "the state of the checkout; see status"},
           {"renewed", MemberType::Flag, nullptr, "whether the document was checked out anew"},
           {"kept", MemberType::Flag, nullptr, "whether the UID is kept now"},
           {"checked_out_by", MemberType::Text, "when somebody else holds it", "who does"}}};
}

}  // namespace vtdirect_cli
