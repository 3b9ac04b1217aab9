#include "hosts/cli/translation/xliff_put_failure.h"

#include "hosts/cli/reasons.h"

namespace vtdirect_cli {
namespace {

// A server may have done what it was asked when its answer doesn't come, and what it was not asked any more
// is the link.
// @param lost  whether a request may have been carried out although it failed
[[nodiscard]] std::string UnlinkedOf(const XliffPut& put, bool lost) {
  if (!lost) return {};
  return "; if only the answer was lost, " + put.file.path + " is on the server without a link";
}

[[nodiscard]] std::string StandingOf(const XliffPut& put, const SourceXliff& after, bool lost) {
  if (!after.linked && !put.before.linked) {
    return "no source XLIFF is linked to the document" + UnlinkedOf(put, lost);
  }
  if (after.uid.empty()) return "what stands now could not be found out";
  if (after.uid == put.before.uid) {
    return "its source XLIFF is " + after.uid + " as before" + UnlinkedOf(put, lost);
  }
  return "its source XLIFF is " + after.uid +
         " now: only the answer may have been lost, or somebody else has sent one";
}

// @param known  whether the message says why
[[nodiscard]] std::string NextOf(const XliffPut& put, bool known) {
  if (put.before.linked || known) return "once that is mended, the same command can be given again";
  // Preferences that don't do are passed over without a word.
  return "where a first one goes is said by the server's XLIFF preferences for " + put.language +
         ", which its administrator can look at: they may be incomplete, or lead nowhere";
}

}  // namespace

Failure SendingFailure(Host& host, const XliffPut& put) {
  const auto reason = LastReason();
  // Preferences that lead nowhere look like a server without what the upload needs.
  const bool known = reason && reason->kind != VtDirectManager::FailureKind::ServiceMissing;
  const bool lost = ChangeMayHaveHappened();
  Failure failure =
      DiagnoseXliff(host, put.subject,
                    {ExitCode::Failure, "sending " + put.file.path + " as the source XLIFF of " +
                                            put.subject.address + " failed"});
  // Of a server that can't be used and a document that isn't there, nothing more can be said.
  if (failure.code != ExitCode::Failure) return failure;
  failure.message += "; " + StandingOf(put, FindSourceXliff(put.subject), lost);
  failure.advice = NextOf(put, known);
  return failure;
}

Failure UnlinkedFailure(Host& host, const XliffPut& put, const SourceXliff& after) {
  const std::string taken = "the server has taken " + put.file.path;
  if (put.before.linked && after.linked && !after.uid.empty()) {
    return DiagnoseXliff(
        host, put.subject,
        {ExitCode::Failure, taken + ", but " + put.subject.address +
                                " still shows the source XLIFF from before, " + after.uid +
                                "; the new iteration is there without a link, and until its "
                                "administrator has linked it, a further one may be refused"});
  }
  if (put.before.linked || after.linked) {
    return DiagnoseXliff(
        host, put.subject,
        {ExitCode::Failure, taken + ", but its UID could not be found out; " +
                                XliffCommandFor("source", put.subject.address) + " asks again"});
  }
  return DiagnoseXliff(
      host, put.subject,
      {ExitCode::Failure, taken + " as a new document, but " + put.subject.address +
                              " does not show it as its source XLIFF; " +
                              XliffCommandFor("source", put.subject.address) +
                              " asks again; before it is sent again, its administrator has to link that "
                              "document or to remove it"});
}

}  // namespace vtdirect_cli
