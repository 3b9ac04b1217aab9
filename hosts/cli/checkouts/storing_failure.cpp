#include "hosts/cli/checkouts/storing_failure.h"

#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/copy_search.h"
#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

constexpr const char* againAdvice = "the same command can be given again";
constexpr const char* unchangedText = "nothing was changed";

[[nodiscard]] const char* NounOf(CheckoutEnd end) {
  return end == CheckoutEnd::Checkin ? "check-in" : "undo";
}

[[nodiscard]] Failure Refused(const std::string& what, const std::string& next) {
  return {ExitCode::Failure, what + "; " + unchangedText, next};
}

[[nodiscard]] Failure RefusedAs(FailureClass failureClass, const std::string& what, const std::string& next) {
  Failure failure = Refused(what, next);
  failure.failureClass = failureClass;
  return failure;
}

// Before a command has changed anything.
[[nodiscard]] Failure DiagnoseUnchanged(Host& host, const std::string& address) {
  Failure failure = Diagnose(host, address, Seen::Missing);
  if (failure.code != ExitCode::Interrupted) failure.message += std::string("; ") + unchangedText;
  return failure;
}

[[nodiscard]] Failure NotFound(Host& host, const std::string& address) {
  Failure failure = DiagnoseUnchanged(host, address);
  if (failure.code == ExitCode::NotFound &&
      VtDirectManager::FileOrFolderExists(WithClosingSlash(address).c_str())) {
    return {ExitCode::Failure, address + " is a folder, and only documents have working copies"};
  }
  return failure;
}

[[nodiscard]] std::string HowToCheckOutNewest(const std::string& uid) {
  const auto newest = NewestUidOf(uid);
  if (!newest || AreSameUid(*newest, uid)) return CommandToType("versions", uid) + " tells which one is";
  return CommandToType("checkout", *newest) + " checks out that one";
}

[[nodiscard]] Failure RefusedOlderIteration(const std::string& address, const std::string& uid) {
  return RefusedAs(FailureClass::Conflict, address + " is not the newest iteration",
                   HowToCheckOutNewest(uid));
}

[[nodiscard]] Failure RefusedOwnCheckout(Host& host, const std::string& address, const std::string& uid) {
  if (const auto kept = CheckoutBook().Find(uid)) {
    return RefusedAs(FailureClass::Conflict,
                     "you have " + address + " checked out already; its working copy is " + kept->uid,
                     "go on with that, or " + CommandToType("undo", kept->uid) + " gives it up");
  }
  const auto found = SearchForCopy(host, address, uid);
  if (!found) return found.failure();
  if (!found->uid.empty()) {
    return RefusedAs(FailureClass::Conflict,
                     "you have " + address + " checked out already, in the temporary workspace " +
                         found->workspaceName + ", which is not kept here; its working copy is " + found->uid,
                     "go on with that, or " + CommandToType("undo", found->uid) + " gives it up");
  }
  return RefusedAs(FailureClass::Conflict,
                   "you have " + address + " checked out already, and its working copy is not kept here",
                   CommandToType("browse-url", uid) + " tells where its page is");
}

// The id of the document alone, or of its working copy, does not take that to be checked in.
[[nodiscard]] Failure RefusedUnknownCopy(const std::string& address) {
  return Refused("you have " + address + " checked out, but its working copy is not kept here",
                 "give the UID of the working copy, or its path, .../Workspaces/NAME/FILE");
}

[[nodiscard]] StateOnServer OwnCheckoutNow(Host& host, const std::string& address, const std::string& uid) {
  const auto found = SearchForCopy(host, address, uid);
  if (found && !found->uid.empty()) {
    return {"you have it checked out now, and its working copy is " + found->uid,
            "go on with that, or " + CommandToType("undo", found->uid) + " gives it up"};
  }
  return {"you have it checked out now, and the server did not tell the working copy",
          CommandToType("browse-url", uid) + " tells where its page is, on which that can be undone"};
}

// What is on the server after a failed checkout, and what to do next.
[[nodiscard]] StateOnServer OutcomeOfCheckout(Host& host, const std::string& address, const std::string& uid,
                                              bool mayBeDone) {
  const CheckoutState state = ReadCheckoutState(uid);
  switch (state.status) {
    case VtDirectManager::CheckoutNone:
      if (mayBeDone) return NotSeenYet("it is not checked out", "the checkout");
      return {.text = std::string(unchangedText) + ", it is not checked out",
              .next = againAdvice,
              .isUnchanged = true};
    case VtDirectManager::CheckoutByOther:
      return {"it is checked out by " + state.user + " now",
              "it can be checked out when that checkout has ended"};
    case VtDirectManager::CheckoutNotPossible:
      return {"it has a newer iteration now", HowToCheckOutNewest(uid)};
    case VtDirectManager::CheckoutStatusFailed:
    case VtDirectManager::CheckoutUnsupported:
      return {"the state on the server could not be found out", CommandToType("status", uid) + " tells"};
    default:
      return OwnCheckoutNow(host, address, uid);
  }
}

[[nodiscard]] StateOnServer OutcomeOfEnd(CheckoutEnd end, const std::string& uid, bool mayBeDone) {
  const CheckoutState state = ReadCheckoutState(uid);
  const std::string next = AdviceAfterEnd(end, uid);
  if (IsWorkingCopy(state.status)) {
    const std::string now = "you still have it checked out, and its working copy is " + uid;
    return mayBeDone ? NotSeenYet(now, std::string("the ") + NounOf(end))
                     : StateOnServer{.text = now, .next = againAdvice, .isUnchanged = true};
  }
  if (state.status == VtDirectManager::CheckoutByOther) {
    return {"it is checked out by " + state.user + " now", next};
  }
  // A working copy in a workspace of the user's own goes by its own id, which ends with it.
  const bool isGone = state.status != VtDirectManager::CheckoutStatusFailed ||
                      (!IsTemporaryCopy(uid) && !VtDirectManager::FileExists(uid.c_str()));
  if (!isGone) return {"the state on the server could not be found out", next};
  return {std::string("its working copy is not there any more, so the ") + NounOf(end) +
              " may have been done, and only the answer lost",
          next};
}

// A server that can't be used tells nothing of its state.
[[nodiscard]] std::optional<Failure> ServerGone(Host& host, const std::string& step, const std::string& uid,
                                                const std::string& next) {
  const auto reason = LastReason();
  auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(uid.c_str()));
  if (!failure || failure->code == ExitCode::Interrupted) return failure;
  failure->message = step + " failed: " + failure->Text() + "; whether it was done is not known";
  failure->advice = "when the server can be used again, " + next;
  failure->reason = reason;
  return failure;
}

}  // namespace

std::string CommandToType(const std::string& command, const std::string& address) {
  return "\"vtdirect " + command + " " + QuotedForShell(address) + "\"";
}

Failure WithState(Failure failure, const StateOnServer& state) {
  failure.message += "; " + state.text;
  failure.advice = state.next;
  if (state.isUnchanged && failure.reason) failure.reason->mayHaveHappened = false;
  return failure;
}

StateOnServer NotSeenYet(const std::string& now, const std::string& noun) {
  return {now + ", but " + noun + " may still be carried out",
          "\"vtdirect recover\" asks again, before the same command is given again"};
}

std::string AdviceAfterEnd(CheckoutEnd end, const std::string& uid) {
  // To verify would check out anew what was undone. To undo once more does no harm.
  if (end == CheckoutEnd::Undo && IsTemporaryCopy(uid)) return againAdvice;
  return CommandToType("verify", uid) + " tells the state of the checkout";
}

std::optional<Failure> RefusalOfCheckout(Host& host, const std::string& address, const std::string& uid) {
  if (uid.empty()) return NotFound(host, address);
  const CheckoutState state = ReadCheckoutState(uid);
  switch (state.status) {
    case VtDirectManager::CheckoutNone:
      if (!IsTemporaryCopy(uid)) return std::nullopt;
      return Refused(address + " is the UID of a working copy that is not there any more",
                     CommandToType("verify", uid) + " tells what is");
    case VtDirectManager::CheckoutByOther:
      return RefusedAs(FailureClass::Locked, address + " is checked out by " + state.user,
                       "it can be checked out when that checkout has ended");
    case VtDirectManager::CheckoutNotPossible:
      return RefusedOlderIteration(address, uid);
    case VtDirectManager::CheckoutUnsupported:
      return Refused("the server of " + address + " offers no checkout", "");
    case VtDirectManager::CheckoutStatusFailed:
      return DiagnoseUnchanged(host, address);
    default:
      return RefusedOwnCheckout(host, address, uid);
  }
}

Failure CheckoutFailure(Host& host, const std::string& address, const std::string& uid) {
  const std::string step = "the checkout of " + address;
  const bool mayBeDone = ChangeMayStillHappen();
  Failure failed = WithReason({ExitCode::Failure, WithWords(step + " failed")});
  if (const auto failure = ServerGone(host, step, uid, CommandToType("status", uid) + " tells"))
    return *failure;
  return WithState(failed, OutcomeOfCheckout(host, address, uid, mayBeDone));
}

Result<CheckoutState> RequireCheckout(Host& host, CheckoutEnd end, const std::string& address,
                                      const std::string& uid) {
  if (uid.empty()) return NotFound(host, address);
  const CheckoutState state = ReadCheckoutState(uid);
  const std::string verify = CommandToType("verify", uid) + " tells the state of the checkout";
  switch (state.status) {
    case VtDirectManager::CheckoutInTempWorkspace:
    case VtDirectManager::CheckoutInWorkspace:
      if (!HasWorkspace(uid)) return RefusedUnknownCopy(address);
      return state;
    case VtDirectManager::CheckoutByOther:
      return RefusedAs(FailureClass::Locked, address + " is checked out by " + state.user,
                       "only they can end that checkout");
    case VtDirectManager::CheckoutByUserUnrecorded:
      if (!HasWorkspace(uid)) return RefusedUnknownCopy(address);
      return Refused(
          "you have " + address + " checked out, but whether this is its working copy could not be found out",
          verify);
    case VtDirectManager::CheckoutNone:
    case VtDirectManager::CheckoutNotPossible:
      if (!IsTemporaryCopy(uid)) return Refused(address + " is not checked out", "");
      if (end == CheckoutEnd::Undo) return state;
      return Refused("the checkout of " + address + " has ended", verify);
    case VtDirectManager::CheckoutUnsupported:
      return Refused("the server of " + address + " offers no checkout", "");
    default: {
      Failure failure = DiagnoseUnchanged(host, address);
      if (failure.code == ExitCode::NotFound && HasWorkspace(uid)) failure.advice = verify;
      return failure;
    }
  }
}

Failure EndFailure(Host& host, CheckoutEnd end, const std::string& address, const std::string& uid) {
  const std::string step = std::string("the ") + NounOf(end) + " of " + address;
  const bool mayBeDone = ChangeMayStillHappen();
  Failure failed = WithReason({ExitCode::Failure, WithWords(step + " failed")});
  if (const auto failure = ServerGone(host, step, uid, AdviceAfterEnd(end, uid))) return *failure;
  return WithState(failed, OutcomeOfEnd(end, uid, mayBeDone));
}

}  // namespace vtdirect_cli
