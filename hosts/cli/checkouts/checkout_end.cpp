#include "hosts/cli/checkouts/checkout_end.h"

#include <vtdirect/vt_direct_manager.h>

#include <optional>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkin_answer.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/journaled_step.h"
#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/checkouts/unstored_copy.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/content_download.h"
#include "hosts/cli/program/interruption_report.h"

namespace vtdirect_cli {
namespace {

// One call of either command, before anything is sent.
struct Ending {
  CheckoutEnd end{};
  std::string address;
  std::string workingCopy;
  std::string document;   // UID before the checkout; empty when it isn't kept
  bool hadEnded = false;  // what is left to undo is its workspace
};

struct Ended {
  std::string uid;      // to go on with
  bool isTold = false;  // the answer told that UID
  std::string version{};
};

[[nodiscard]] const char* NameOf(CheckoutEnd end) {
  return end == CheckoutEnd::Checkin ? "checkin" : "undo";
}

[[nodiscard]] std::string DoneTo(const Ending& ending) {
  if (ending.hadEnded)
    return "the checkout of " + ending.address + " had ended before, and nothing was undone";
  return (ending.end == CheckoutEnd::Checkin ? "checked in " : "undid the checkout of ") + ending.address;
}

// An answer that tells no document leaves the library with the id that went in, or with none at all. An undo
// of what was checked in before leaves it with the iteration that was checked out, and there is a newer one.
[[nodiscard]] Ended UidAfterUndo(const Ending& ending, const std::string& told) {
  const bool isTold = !ending.hadEnded && HasObjectId(told) && !AreSameUid(told, ending.workingCopy);
  if (isTold) return {.uid = told, .isTold = true};
  const std::string& known = ending.document.empty() ? ending.workingCopy : ending.document;
  if (const auto newest = NewestUidOf(known)) return {.uid = *newest};
  const bool isUnknown = ending.document.empty() && ending.hadEnded;
  return {.uid = isUnknown ? told : ending.document};
}

// Of a temporary workspace the library reports an undo that the server has refused as done, so that is not taken
// for done before the document tells it. Of another workspace a refusal is told.
[[nodiscard]] bool MayStillStand(const Ending& ending, const std::string& uid) {
  if (ending.hadEnded) return false;
  switch (ReadCheckoutState(uid.empty() ? ending.workingCopy : uid).status) {
    case VtDirectManager::CheckoutByUserUnrecorded:
    case VtDirectManager::CheckoutInTempWorkspace:
    case VtDirectManager::CheckoutInWorkspace:
      return true;
    case VtDirectManager::CheckoutStatusFailed:
      return IsTemporaryCopy(ending.workingCopy);
    default:
      return false;
  }
}

[[nodiscard]] Result<Ended> SettleUndo(Host& host, const Ending& ending, const std::string& told) {
  Ended ended = UidAfterUndo(ending, told);
  if (MayStillStand(ending, ended.uid)) {
    return EndFailure(host, ending.end, ending.address, ending.workingCopy);
  }
  if (!ending.hadEnded) WarnOfLeftWorkspace(host);
  return ended;
}

[[nodiscard]] Result<Ended> SettleCheckin(Host& host, const Ending& ending, const std::string& told) {
  const CheckinAnswer answer = ReadCheckinAnswer(host, told, ending.workingCopy, ending.document);
  WarnOfLeftWorkspace(host);
  if (answer.iteration.empty()) return UnknownCheckin(answer, ending.address + " was to be checked in");
  return Ended{.uid = answer.iteration, .isTold = answer.isTold};
}

[[nodiscard]] Result<Ended> Perform(Host& host, const Ending& ending) {
  ForgetReasons();
  JournaledStep step(host, {NameOf(ending.end), ending.address, ending.workingCopy});
  const char* const workingCopy = ending.workingCopy.c_str();
  const bool isCheckin = ending.end == CheckoutEnd::Checkin;
  const std::string told =
      isCheckin ? VtDirectManager::Checkin(workingCopy) : VtDirectManager::UndoCheckout(workingCopy);
  if (told.empty()) {
    step.SettleUnlessUnknown();
    return EndFailure(host, ending.end, ending.address, ending.workingCopy);
  }
  auto ended = isCheckin ? SettleCheckin(host, ending, told) : SettleUndo(host, ending, told);
  if (!ended) return ended;
  ForgetCheckout(host, ending.workingCopy);
  step.Settle();
  return ended;
}

[[nodiscard]] std::string VersionOf(const std::string& uid) {
  std::string version;
  std::string newest;
  static_cast<void>(VtDirectManager::GetStatus(uid.c_str(), version, newest, nullptr));
  return version;
}

[[nodiscard]] ExitCode Report(Host& host, const Ending& ending, const Ended& ended) {
  const std::string done = DoneTo(ending);
  if (ended.uid.empty()) {
    return host.output().Fail(
        {ExitCode::Incomplete, done + ", and the server did not tell the UID to go on with; " +
                                   CommandToType("uid", "PATH") + " tells it by the document's path"});
  }
  Record record{{"address", ending.address}, {"uid", ended.uid}};
  if (ending.end == CheckoutEnd::Undo) record.emplace_back("had_ended", ending.hadEnded);
  if (!ended.version.empty()) record.emplace_back("version", ended.version);
  host.output().Row({{"uid", ended.uid}}, record);
  static_cast<void>(host.output().Flush());
  if (!ended.isTold && !ending.hadEnded)
    host.output().Warning("the server's answer named no document; this is the newest iteration now");
  host.output().Note(done + (ended.version.empty() ? "" : "; it is version " + ended.version + " now"));
  return ExitCode::Ok;
}

// Which working copy is meant, and that its checkout can end.
[[nodiscard]] Result<Ending> SettleEnding(Host& host, const std::string& address, CheckoutEnd end) {
  ForgetReasons();
  const auto workingCopy = FindWorkingCopy(host, address);
  if (!workingCopy) return workingCopy.failure();
  const auto state = RequireCheckout(host, end, address, *workingCopy);
  if (!state) return state.failure();
  if (Interrupted()) return InterruptedFailure();
  const auto kept = CheckoutBook().Find(*workingCopy);
  Ending ending{end, address, *workingCopy, kept ? kept->document : "", HasEnded(state->status)};
  if (end == CheckoutEnd::Undo) return ending;
  if (const auto failure = RefusalOfUnstored(address, *workingCopy, "checked in")) return *failure;
  return ending;
}

[[nodiscard]] ExitCode ReportDryRun(Host& host, const Ending& ending) {
  const std::string would = ending.end == CheckoutEnd::Checkin ? "would check in" : "would undo";
  host.output().Row({{"would", would}, {"address", ending.address}},
                    {{"address", ending.address}, {"uid", ending.workingCopy}, {"dry_run", true}});
  return ExitCode::Ok;
}

}  // namespace

void WarnOfLeftWorkspace(Host& host) {
  const auto reason = WhyWorkspaceStays();
  if (!reason) return;
  host.output().Warning("the temporary workspace could not be deleted (" + WordsOf(*reason) +
                        "); it may stay on the server, at " + reason->url);
}

std::optional<Failure> UndoOwnCheckout(Host& host, const std::string& address,
                                       const std::string& workingCopy) {
  const auto kept = CheckoutBook().Find(workingCopy);
  const auto ended =
      Perform(host, {CheckoutEnd::Undo, address, workingCopy, kept ? kept->document : std::string()});
  return ended ? std::nullopt : std::optional(ended.failure());
}

ExitCode EndCheckout(Host& host, const std::string& address, CheckoutEnd end, bool dryRun) {
  const auto kind = RequireAddress(address);
  if (!kind) return host.output().Fail(kind.failure());

  InterruptionReport report(host, NameOf(end));
  const auto ending = SettleEnding(host, address, end);
  if (!ending) return report.Fail(ending.failure());
  if (dryRun) return ReportDryRun(host, *ending);
  report.TellOfOpenChange("whether the checkout of " + address + " has ended is not known; " +
                          AdviceAfterEnd(end, ending->workingCopy));
  auto ended = Perform(host, *ending);
  if (!ended) return report.Fail(ended.failure());
  report.Tell(DoneTo(*ending) + "; the UID to go on with is " + ended->uid);
  ended->version = VersionOf(ended->uid);
  const ExitCode code = Report(host, *ending, *ended);
  // Reads the whole content, so all that the answer has told comes before it.
  if (end == CheckoutEnd::Checkin && !Interrupted()) KeepContentOf(host, ending->workingCopy, ended->uid);
  return Interrupted() ? report.Report() : code;
}

std::vector<MemberRow> CheckoutEndMembers() {
  return {
      {"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
      {"uid", MemberType::Text, nullptr, "the UID to go on with; with --dry-run that of the working copy"},
      {"version", MemberType::Text, "when the server tells it", "its version"},
      {"dry_run", MemberType::Flag, "with --dry-run", "true: it could be done, and was not"}};
}

}  // namespace vtdirect_cli
