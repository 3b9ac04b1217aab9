#include "hosts/cli/checkouts/checkout_end.h"

#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/journaled_step.h"
#include "hosts/cli/diagnosis.h"
#include "hosts/cli/interruption_report.h"
#include "hosts/cli/reasons.h"

namespace vtdirect_cli {
namespace {

// One call of either command.
struct Ending {
  CheckoutEnd end{};
  std::string address;
  std::string workingCopy;
  std::string document;  // UID before the checkout; empty when it isn't kept
  std::string uid;       // to go on with
  std::string version;
  bool isTold = false;    // the answer told that UID
  bool hadEnded = false;  // what was left to undo was its workspace
};

[[nodiscard]] const char* NameOf(CheckoutEnd end) {
  return end == CheckoutEnd::Checkin ? "checkin" : "undo";
}

[[nodiscard]] std::string DoneTo(const Ending& ending) {
  if (ending.hadEnded)
    return "the checkout of " + ending.address + " had ended before, and nothing was undone";
  return (ending.end == CheckoutEnd::Checkin ? "checked in " : "undid the checkout of ") + ending.address;
}

[[nodiscard]] bool IsCheckedOutByUser(const std::string& uid) {
  switch (VtDirectManager::GetCheckoutStatus(uid.c_str(), nullptr)) {
    case VtDirectManager::CheckoutByUserUnrecorded:
    case VtDirectManager::CheckoutInTempWorkspace:
    case VtDirectManager::CheckoutInWorkspace:
      return true;
    default:
      return false;
  }
}

// An answer that tells no document leaves the library with the id that went in, or with none at all. An undo
// of what was checked in before leaves it with the iteration that was checked out, and there is a newer one.
void SettleUid(const std::string& told, Ending& ending) {
  ending.isTold = !ending.hadEnded && HasObjectId(told) && !AreSameUid(told, ending.workingCopy);
  ending.uid = told;
  if (ending.isTold) return;
  const std::string& known = ending.document.empty() ? ending.workingCopy : ending.document;
  const std::string newest = VtDirectManager::GetLatestUPath(known.c_str());
  ending.uid = HasObjectId(newest) ? newest : ending.document;
  if (ending.uid.empty() && ending.hadEnded) ending.uid = told;
}

[[nodiscard]] std::optional<Failure> Perform(Host& host, Ending& ending) {
  ForgetReasons();
  JournaledStep step(host, {{}, {}, NameOf(ending.end), ending.address, ending.workingCopy, {}, {}});
  const char* const workingCopy = ending.workingCopy.c_str();
  const std::string told = ending.end == CheckoutEnd::Checkin ? VtDirectManager::Checkin(workingCopy)
                                                              : VtDirectManager::UndoCheckout(workingCopy);
  if (told.empty()) {
    step.SettleUnlessUnknown();
    return EndFailure(host, ending.end, ending.address, ending.workingCopy);
  }
  SettleUid(told, ending);
  // Of a temporary workspace the library reports an undo that the server has refused as done.
  if (ending.end == CheckoutEnd::Undo && !ending.hadEnded && IsCheckedOutByUser(ending.uid)) {
    return EndFailure(host, ending.end, ending.address, ending.workingCopy);
  }
  if (!ending.hadEnded) WarnOfLeftWorkspace(host);
  ForgetCheckout(host, ending.workingCopy);
  step.Settle();
  return std::nullopt;
}

void ReadVersion(Ending& ending) {
  std::string newest;
  static_cast<void>(VtDirectManager::GetStatus(ending.uid.c_str(), ending.version, newest, nullptr));
}

[[nodiscard]] ExitCode Report(Host& host, const Ending& ending) {
  const std::string done = DoneTo(ending);
  if (ending.uid.empty()) {
    return host.output().Fail(
        {ExitCode::Incomplete, done + ", and the server did not tell the UID to go on with; " +
                                   CommandToType("uid", "PATH") + " tells it by the document's path"});
  }
  Record record{{"address", ending.address}, {"uid", ending.uid}};
  if (ending.end == CheckoutEnd::Undo) record.emplace_back("had_ended", ending.hadEnded);
  if (!ending.version.empty()) record.emplace_back("version", ending.version);
  host.output().Row({{"uid", ending.uid}}, record);
  static_cast<void>(host.output().Flush());
  if (!ending.isTold && !ending.hadEnded)
    host.output().Warning("the server's answer named no document; this is the newest iteration now");
  host.output().Note(done + (ending.version.empty() ? "" : "; it is version " + ending.version + " now"));
  return ExitCode::Ok;
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

ExitCode EndCheckout(Host& host, const std::string& address, CheckoutEnd end, bool dryRun) {
  Ending ending;
  ending.end = end;
  ending.address = address;
  const auto kind = RequireAddress(ending.address);
  if (!kind) return host.output().Fail(kind.failure());

  InterruptionReport report(host, NameOf(end));
  ForgetReasons();
  CheckoutState standing;
  auto refusal = FindWorkingCopy(host, ending.address, ending.workingCopy);
  if (!refusal) refusal = RefusalOfEnd(host, end, ending.address, ending.workingCopy, standing);
  if (Interrupted()) return report.Report();
  if (refusal) return host.output().Fail(*refusal);
  if (const auto kept = CheckoutBook().Find(ending.workingCopy)) ending.document = kept->document;
  ending.hadEnded = HasEnded(standing.status);

  if (dryRun) return ReportDryRun(host, ending);

  report.Tell("whether the checkout of " + ending.address + " has ended is not known; " +
              AdviceAfterEnd(end, ending.workingCopy));
  const auto failure = Perform(host, ending);
  if (failure) return Interrupted() ? report.Report() : host.output().Fail(*failure);
  report.Tell(DoneTo(ending) + "; the UID to go on with is " + ending.uid);
  ReadVersion(ending);
  const ExitCode code = Report(host, ending);
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
