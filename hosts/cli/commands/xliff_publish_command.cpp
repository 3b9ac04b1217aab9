#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/checkouts/journaled_step.h"
#include "hosts/cli/checkouts/recovery.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption_report.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/translation/xliff_subject.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Failure NotMarked(Host& host, const XliffSubject& subject) {
  return DiagnoseXliff(host, subject,
                       {ExitCode::Failure,
                        "the server did not mark " + subject.address +
                            " as published; it takes a translation, as \"vtdirect xliff list\" shows them"});
}

[[nodiscard]] ExitCode TellPublish(Host& host, const XliffSubject& subject) {
  host.output().Row({{"would", std::string("would publish")}, {"address", subject.address}},
                    {{"address", subject.address}, {"uid", subject.uid}, {"dry_run", true}});
  return ExitCode::Ok;
}

ExitCode RunXliffPublish(Host& host, const Arguments& arguments) {
  InterruptionReport report(host, "xliff publish");
  const auto settled = SettleSubject(host, arguments);
  if (!settled) return report.Fail(settled.failure());
  const XliffSubject& subject = *settled;
  if (const auto failure = RefusalOfAnotherPlace(subject.address, subject.uid)) return report.Fail(*failure);
  if (Interrupted()) return report.Report();
  if (IsDryRun(arguments)) return TellPublish(host, subject);
  // To mark it once more changes nothing, and no question tells whether it is.
  report.TellOfOpenChange("whether " + subject.address +
                          " is marked as published is not known; the same command can be given again");
  ForgetReasons();
  JournaledStep step(host, {"xliff publish", subject.address, subject.uid});
  if (!VtDirectManager::SetXliffPublished(subject.uid.c_str())) {
    step.SettleUnlessUnknown();
    return report.Fail(NotMarked(host, subject));
  }
  report.Tell(subject.address + " is marked as published");
  step.Settle();
  SettleRepeated(host, "xliff publish", subject.uid);
  host.output().Row({{"uid", subject.uid}}, {{"address", subject.address}, {"uid", subject.uid}});
  host.output().Note(subject.address + " is marked as published");
  return ExitCode::Ok;
}

}  // namespace

CommandRow XliffPublishCommand() {
  return {"xliff publish",
          "Mark a translated document as published",
          "Marks the document at ADDRESS, a translation, as published, and prints its UID. To do so again "
          "changes nothing.",
          {{"ADDRESS", "A path or a UID of the translation; see ADDRESSES."}},
          {DryRunOption()},
          Requests::Some,
          RunXliffPublish,
          {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
           {"uid", MemberType::Text, nullptr, "the UID of the document"},
           DryRunMember("true: it was not marked; whether it is a translation shows only then")}};
}

}  // namespace vtdirect_cli
