#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/checkouts/journaled_step.h"
#include "hosts/cli/checkouts/recovery.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/host.h"
#include "hosts/cli/reasons.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/translation/xliff_subject.h"

namespace vtdirect_cli {
namespace {

ExitCode RunXliffPublish(Host& host, const Arguments& arguments) {
  const auto settled = SettleSubject(host, arguments);
  if (!settled) return host.output().Fail(settled.failure());
  const XliffSubject& subject = *settled;
  if (const auto failure = RefusalOfAnotherPlace(subject.address, subject.uid)) {
    return host.output().Fail(*failure);
  }
  ForgetReasons();
  JournaledStep step(host, {{}, {}, "xliff publish", subject.address, subject.uid, {}, {}});
  if (!VtDirectManager::SetXliffPublished(subject.uid.c_str())) {
    step.SettleUnlessUnknown();
    return host.output().Fail(
        DiagnoseXliff(host, subject,
                      {ExitCode::Failure,
                       "the server did not mark " + subject.address +
                           " as published; it takes a translation, as \"vtdirect xliff list\" shows them"}));
  }
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
          {},
          true,
          RunXliffPublish,
          {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
           {"uid", MemberType::Text, nullptr, "the UID of the document"}}};
}

}  // namespace vtdirect_cli
