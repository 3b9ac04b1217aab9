#include "hosts/cli/checkouts/journaled_step.h"

#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {

JournaledStep::JournaledStep(Host& host, JournalEntry entry) : host_(host), entry_(std::move(entry)) {
  const std::string fault = Journal().Write(entry_);
  written_ = fault.empty();
  if (!written_) {
    host_.output().Warning("the change is not written to the journal, so recover won't know of it: " + fault);
  }
}

void JournaledStep::Settle() {
  if (!written_) return;
  written_ = false;
  const std::string fault = Journal().StrikeOut(entry_);
  if (!fault.empty()) host_.output().Warning("a change that has ended is still in the journal: " + fault);
}

void JournaledStep::SettleUnlessUnknown() {
  if (!ChangeMayHaveHappened() && !Interrupted()) Settle();
}

}  // namespace vtdirect_cli
