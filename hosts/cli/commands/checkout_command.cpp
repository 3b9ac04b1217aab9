#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/journaled_step.h"
#include "hosts/cli/checkouts/presence.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/many/batch_options.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption_report.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

void Report(Host& host, const std::string& address, const std::string& document, const std::string& uid,
            bool kept) {
  host.output().Row({{"uid", uid}},
                    {{"address", address}, {"document", document}, {"uid", uid}, {"kept", kept}});
  static_cast<void>(host.output().Flush());
  host.output().Note("checked out " + address +
                     (kept ? "; put, checkin and undo find its working copy by this address as well" : ""));
}

// A signal before the answer leaves a working copy that nobody knows of here.
[[nodiscard]] std::string UnknownEnd(const std::string& address) {
  return "whether " + address + " is checked out is not known; " + CommandToType("status", address) +
         " tells";
}

[[nodiscard]] ExitCode CheckOutOne(Host& host, const Arguments& arguments, const std::string& address) {
  const auto kind = RequireAddress(address);
  if (!kind) return host.output().Fail(kind.failure());

  InterruptionReport report(host, "checkout");
  ForgetReasons();
  const std::string document = VtDirectManager::GetUID(address.c_str());
  auto refusal = RefusalOfAnotherPlace(address, document);
  if (!refusal) refusal = RefusalOfCheckout(host, address, document);
  if (refusal) return report.Fail(*refusal);
  if (Interrupted()) return report.Report();

  if (arguments.Has("dry-run")) {
    host.output().Row({{"would", std::string("would check out")}, {"address", address}},
                      {{"address", address}, {"document", document}, {"dry_run", true}});
    return ExitCode::Ok;
  }

  report.TellOfOpenChange(UnknownEnd(address));
  JournaledStep step(host, {"checkout", address, document});
  const std::string uid = CheckOutDocument(document);
  if (uid.empty()) {
    step.SettleUnlessUnknown();
    return report.Fail(CheckoutFailure(host, address, document));
  }
  report.Tell(address + " is checked out; its working copy is " + uid);
  const bool kept = KeepCheckout(host, document, uid);
  step.Settle();
  Report(host, address, document, uid, kept);
  return Interrupted() ? report.Report() : ExitCode::Ok;
}

ExitCode RunCheckout(Host& host, const Arguments& arguments) {
  return ChangeEach(host, arguments, OfFolders::All, CheckOutOne);
}

}  // namespace

CommandRow CheckoutCommand() {
  return {
      "checkout",
      "Check a document out",
      "Checks the document at ADDRESS out, so that nobody else can change it, and prints the UID of the "
      "working copy. That UID is kept (see checkouts): from then on put, verify, checkin and undo find the "
      "working copy by the document's address as well.\n\nThe working copy is in a temporary workspace, or "
      "in one of your own when ADDRESS is the document's path there (.../Workspaces/NAME/FILE). A document "
      "that is checked out already, by whomever, is refused, and so is an older iteration, or a document of "
      "the name that is in another folder than the path says. Of several, if one fails, the others go on.",
      {{"ADDRESS", "A path, a pattern or a UID; see ADDRESSES. May be given several times.",
        Count::AtLeastOnce}},
      ChangingManyOptions(OfFolders::All),
      Requests::Some,
      RunCheckout,
      {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
       {"document", MemberType::Text, nullptr, "the document's UID as it was before its checkout"},
       {"uid", MemberType::Text, "without --dry-run", "the working copy's UID, to go on with"},
       {"kept", MemberType::Flag, "without --dry-run", "whether that UID is kept"},
       {"dry_run", MemberType::Flag, "with --dry-run", "true: it could be checked out, and was not"}}};
}

}  // namespace vtdirect_cli
