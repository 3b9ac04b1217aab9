#include "hosts/cli/translation/xliff_recovery.h"

#include "hosts/cli/translation/xliff_subject.h"

namespace vtdirect_cli {
namespace {

constexpr const char* kMayBeUnlinked =
    "; it may be on the server without a link, which its administrator can see; it can be sent again";

// The question is answered alike for a document without a source XLIFF and when it fails. So it is asked twice,
// and the second no is believed of a server that answers for the document's translations.
[[nodiscard]] std::optional<SourceXliff> SourceAsToldByServer(const XliffSubject& subject) {
  SourceXliff source = FindSourceXliff(subject);
  if (!source.linked) source = FindSourceXliff(subject);
  if (!source.linked && !AnswersQuestions(subject)) return std::nullopt;
  if (source.linked && source.uid.empty()) return std::nullopt;
  return source;
}

}  // namespace

Finding FindSentXliff(Host& host, const JournalEntry& entry) {
  const auto source = SourceAsToldByServer({entry.address, entry.uid});
  if (!source) return NotKnown(entry.address);
  if (!source->linked) {
    return {
        true,
        false,
        {},
        "no source XLIFF is linked to " + entry.address + ", so " + entry.file + " is not" + kMayBeUnlinked};
  }
  const std::string sum = SumOnServer(host, source->uid);
  if (sum.empty()) return NotKnown(entry.address);
  if (sum == entry.sha256) {
    return {true, false, {}, entry.file + " is the source XLIFF of " + entry.address + ": " + source->uid};
  }
  return {true,
          false,
          {},
          "the source XLIFF of " + entry.address + " is " + source->uid +
              ", which has another content than " + entry.file + " had" + kMayBeUnlinked};
}

Finding FindPublication(const JournalEntry& entry) {
  return {false,
          false,
          {},
          "no question tells whether " + entry.address + " is marked as published; " +
              XliffCommandFor("publish", entry.address) +
              " can be given again: that changes nothing where it is marked, and settles this"};
}

}  // namespace vtdirect_cli
