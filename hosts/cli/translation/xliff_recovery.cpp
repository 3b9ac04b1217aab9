#include "hosts/cli/translation/xliff_recovery.h"

#include "hosts/cli/translation/xliff_subject.h"

namespace vtdirect_cli {
namespace {

constexpr const char* mayBeUnlinked =
    "; it may be on the server without a link, which its administrator can see; it can be sent again";

}  // namespace

Finding FindSentXliff(Host& host, const JournalEntry& entry) {
  const auto source = AskForSourceXliff({entry.address, entry.uid});
  if (!source || (source->linked && source->uid.empty())) return NotKnown(entry.address);
  if (!source->linked) {
    return Known("no source XLIFF is linked to " + entry.address + ", so " + entry.file + " is not" +
                 mayBeUnlinked);
  }
  const std::string sum = SumOnServer(host, source->uid);
  if (sum.empty()) return NotKnown(entry.address);
  if (sum == entry.sha256) {
    return Known(entry.file + " is the source XLIFF of " + entry.address + ": " + source->uid);
  }
  return Known("the source XLIFF of " + entry.address + " is " + source->uid +
               ", which has another content than " + entry.file + " had" + mayBeUnlinked);
}

Finding FindPublication(const JournalEntry& entry) {
  return {.isKnown = false,
          .words = "no question tells whether " + entry.address + " is marked as published; " +
                   XliffCommandFor("publish", entry.address) +
                   " can be given again: that changes nothing where it is marked, and settles this"};
}

}  // namespace vtdirect_cli
