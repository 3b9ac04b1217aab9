#include "hosts/cli/translation/xliff_put_failure.h"

#include <vtdirect/vt_direct_manager.h>

#include <optional>

#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::FailureKind;

// A server may have done what it was asked when its answer doesn't come, and what it was not asked any more
// is the link.
// @param lost  whether a request may have been carried out although it failed
[[nodiscard]] std::string UnlinkedOf(const XliffPut& put, bool lost) {
  if (!lost) return {};
  return "; if only the answer was lost, " + put.file.path + " is on the server without a link";
}

[[nodiscard]] std::string StateAfter(const XliffPut& put, const std::optional<SourceXliff>& told, bool lost) {
  const SourceXliff& after = told ? *told : put.before;
  if (told && !after.linked && !put.before.linked) {
    return "no source XLIFF is linked to the document" + UnlinkedOf(put, lost);
  }
  if (!told || after.uid.empty()) return "the state on the server could not be found out";
  if (after.uid == put.before.uid) {
    return "its source XLIFF is " + after.uid + " as before" + UnlinkedOf(put, lost);
  }
  return "its source XLIFF is " + after.uid +
         " now: only the answer may have been lost, or somebody else has sent one";
}

// @param known  whether the message says why
[[nodiscard]] std::string NextOf(const XliffPut& put, bool known) {
  if (put.before.linked || known) return "once that is put right, the same command can be given again";
  // Preferences that don't do are passed over without a word.
  return "where a first one goes is said by the server's XLIFF preferences for " + put.language +
         ", which its administrator can look at: they may be incomplete, or lead nowhere";
}

[[nodiscard]] std::optional<Failure> ServerFailed(Host& host, const XliffPut& put) {
  return ServerFailureByReason(host, VtDirectManager::GetServerURL(put.subject.uid.c_str()));
}

// What a server failed at after it had taken the file does not hide that it has: whoever does not know would
// send it again.
[[nodiscard]] Failure AfterTaking(Host& host, const XliffPut& put, Failure taken) {
  if (const auto failed = ServerFailed(host, put)) {
    taken.message += " (" + failed->Text() + ")";
    taken.reason = failed->reason;
  } else {
    taken = DiagnoseXliff(host, put.subject, taken);
  }
  taken.changeIsOpen = true;
  return taken;
}

}  // namespace

Failure SendingFailure(Host& host, const XliffPut& put) {
  const std::string url = VtDirectManager::GetServerURL(put.subject.uid.c_str());
  // Of a server that can't be used nothing more can be said.
  if (auto failure = ServerFailureByReason(host, url)) return *failure;
  const auto reason = LastReason();
  // Preferences that lead nowhere look like a server without what the upload needs.
  const bool known = reason && reason->kind != FailureKind::ServiceMissing;
  const bool lost = ChangeMayHaveHappened();
  const bool tellsMore = reason && reason->kind != FailureKind::NotFound;
  Failure failure{ExitCode::Failure,
                  "sending " + put.file.path + " as the source XLIFF of " + put.subject.address + " failed"};
  if (tellsMore) failure.message += " (" + WordsOf(*reason) + ")";
  failure.message += "; " + StateAfter(put, AskForSourceXliff(put.subject), lost);
  failure.advice = NextOf(put, known);
  failure.reason = reason;
  return failure;
}

Failure UnlinkedFailure(Host& host, const XliffPut& put, const SourceXliff& after) {
  const std::string taken = "the server has taken " + put.file.path;
  const bool showsOld = put.before.linked && after.linked && !after.uid.empty();
  if (showsOld) {
    return AfterTaking(host, put,
                       {ExitCode::Failure, taken + ", but " + put.subject.address +
                                               " still shows the source XLIFF from before, " + after.uid +
                                               "; the new iteration is there without a link, and until its "
                                               "administrator has linked it, a further one may be refused"});
  }
  const std::string asksAgain = XliffCommandFor("source", put.subject.address) + " asks again";
  if (put.before.linked || after.linked || ServerFailed(host, put)) {
    return AfterTaking(host, put,
                       {ExitCode::Failure, taken + ", but its UID could not be found out; " + asksAgain});
  }
  return AfterTaking(host, put,
                     {ExitCode::Failure, taken + " as a new document, but " + put.subject.address +
                                             " does not show it as its source XLIFF; " + asksAgain +
                                             "; before it is sent again, its administrator has to link that "
                                             "document or to remove it"});
}

}  // namespace vtdirect_cli
