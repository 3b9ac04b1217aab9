#include "hosts/cli/checkouts/recovery.h"

#include <unistd.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>

#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/checkouts/presence.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/content_download.h"
#include "hosts/cli/files/sha256.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/translation/xliff_recovery.h"
#include "hosts/cli/work_folder/work_folder.h"

namespace vtdirect_cli {
namespace {

constexpr std::size_t mostWarnings = 3;

// The id of the document that a UID of any form was taken from.
[[nodiscard]] std::string DocumentOf(const std::string& uid) {
  const auto parsed = VtDirectManager::ParseUID(uid.c_str());
  return parsed ? parsed->document : std::string();
}

[[nodiscard]] Finding CheckedOutAs(const std::string& copy, const JournalEntry& entry) {
  return {.isKnown = true,
          .workingCopy = copy,
          .words = entry.address + " was checked out; its working copy is " + copy};
}

[[nodiscard]] Finding FindCheckout(const JournalEntry& entry) {
  const VtDirectManager::Outcome outcome;
  const auto copies = VtDirectManager::FindTemporaryCheckouts(entry.uid.c_str());
  const CheckoutState state = ReadCheckoutState(entry.uid);
  if (!copies || AQuestionFailed(outcome) || state.status == VtDirectManager::CheckoutStatusFailed)
    return NotKnown(entry.address);
  for (const auto& copy : *copies) {
    if (copy.uid.empty() || DocumentOf(copy.uid) != DocumentOf(entry.uid)) continue;
    return CheckedOutAs(copy.uid, entry);
  }
  if (state.status == VtDirectManager::CheckoutInWorkspace) {
    // In a workspace of the user's own the address leads to the working copy.
    const std::string copy = WithWorkspace(VtDirectManager::GetUID(entry.address.c_str()));
    if (!HasObjectId(copy)) return NotKnown(entry.address);
    return CheckedOutAs(copy, entry);
  }
  if (state.status == VtDirectManager::CheckoutByUserUnrecorded) {
    return {.isKnown = false,
            .words = "you have " + entry.address +
                     " checked out, and the server does not tell the working copy; " +
                     CommandToType("browse-url", entry.uid) + " tells where its page is"};
  }
  return Known(entry.address + " was not checked out; nothing was changed");
}

// What is told to have ended is cleared away. While the user holds the document, a working copy that one answer
// does not show may be there still, with all that is in it.
[[nodiscard]] Presence PresenceUnlessHeld(const std::string& workingCopy) {
  if (!IsTemporaryCopy(workingCopy)) return PresenceOf(workingCopy);
  const VtDirectManager::VtCheckoutStatus status = StateOfTemporaryCopy(workingCopy).status;
  if (status == VtDirectManager::CheckoutInTempWorkspace) return Presence::There;
  return HasEnded(status) ? Presence::Gone : Presence::NotKnown;
}

[[nodiscard]] Finding FindEnd(const JournalEntry& entry) {
  switch (PresenceUnlessHeld(entry.uid)) {
    case Presence::There:
      return Known("you still have " + entry.address + " checked out, and its working copy is " + entry.uid +
                   "; " + CommandToType(entry.step, entry.address) + " can be given again");
    case Presence::Gone:
      return {.isKnown = true, .hasEnded = true, .words = "the checkout of " + entry.address + " has ended"};
    default:
      return NotKnown(entry.address);
  }
}

[[nodiscard]] Finding CompareContent(Host& host, const JournalEntry& entry, const std::string& uid) {
  const std::string sum = SumOnServer(host, uid);
  if (sum.empty()) return NotKnown(entry.address);
  if (sum == entry.sha256) {
    return {.isKnown = true, .isSame = true, .words = entry.file + " is stored in " + uid};
  }
  return Known(uid + " has another content than " + entry.file +
               " had, so that was not stored, or somebody has stored "
               "another since; it can be put again");
}

[[nodiscard]] Finding FindStore(Host& host, const JournalEntry& entry) {
  switch (PresenceOfWorkingCopy(entry.uid)) {
    case Presence::There:
      return CompareContent(host, entry, ByOwnId(entry.uid));
    case Presence::Gone:
      return Known("the working copy " + entry.uid + ", into which " + entry.file +
                   " was stored, is not there any more; " + CommandToType("verify", entry.address) +
                   " tells what is");
    default:
      return NotKnown(entry.address);
  }
}

[[nodiscard]] Finding FindIteration(Host& host, const JournalEntry& entry) {
  const auto newest = NewestUidOf(entry.uid);
  if (!newest) return NotKnown(entry.address);
  if (!AreSameUid(*newest, entry.uid)) return CompareContent(host, entry, *newest);
  return Known(entry.file + " was not stored: " + entry.address +
               " has no newer iteration; it can be put again");
}

[[nodiscard]] Finding NotCreated(const JournalEntry& entry) {
  return Known(entry.file + " was not stored: there is no document " + entry.uid + "; it can be put again");
}

// The path leads to a document of the name in another folder, so only the folder tells whether it has one.
[[nodiscard]] Finding FindBesideNamesake(const JournalEntry& entry) {
  switch (PresenceInFolder(entry.uid)) {
    case Presence::Gone:
      return NotCreated(entry);
    case Presence::There:
      return Known(
          "there is a document " + entry.uid + " now, which was not there before " + entry.file +
          " was sent; its content could not be compared, since the server leads that path to another "
          "document of the name");
    default:
      return NotKnown(entry.address);
  }
}

[[nodiscard]] Finding FindCreation(Host& host, const JournalEntry& entry) {
  const VtDirectManager::Outcome outcome;
  const std::string uid = VtDirectManager::GetUID(entry.uid.c_str());
  if (const auto refusal = RefusalOfAnotherPlace(entry.uid, uid)) {
    return refusal->code == ExitCode::NotFound ? FindBesideNamesake(entry) : NotKnown(entry.address);
  }
  if (!uid.empty()) return CompareContent(host, entry, uid);
  return AnswerIsMissing(outcome) ? NotKnown(entry.address) : NotCreated(entry);
}

// Whether a checkout has ended by its check-in, its content tells.
void KeepContentIfCheckedIn(Host& host, const JournalEntry& entry) {
  if (entry.step != "checkin" || FetchRecords().OfWorkingCopy(entry.uid).empty()) return;
  if (const auto newest = NewestUidOf(entry.uid)) KeepContentOf(host, entry.uid, *newest);
}

// A further commit of the file knows by this, and no more by the journal, that what is in the working copy is its own.
void KeepForCommit(const JournalEntry& entry) {
  if (!IsPlaceOfWorkFile(entry.file)) return;
  FetchRecord record;
  record.address = entry.address;
  record.uid = entry.uid;
  record.sha256 = entry.sha256;
  record.copyUse = CopyUse::Stored;
  static_cast<void>(FetchRecords().Keep(entry.file, record));
}

// "a checkout", "an undo", "an xliff put".
[[nodiscard]] std::string WithArticle(const std::string& step) {
  const bool startsWithVowel = step.find_first_of("aeioux") == 0;
  return (startsWithVowel ? "an " : "a ") + step;
}

}  // namespace

Finding Known(const std::string& words) {
  return {.isKnown = true, .words = words};
}

Finding NotKnown(const std::string& address) {
  return {.isKnown = false,
          .words = "the state of " + address + " could not be found out; \"vtdirect recover\" asks again"};
}

std::string SumOnServer(Host& host, const std::string& uid) {
  const std::string path = host.workDirectory() + "/recovered";
  std::string ignored;
  VtDirectManager::DownloadOptions options;
  options.compareSize = true;
  const bool fetched = VtDirectManager::GetFile(uid.c_str(), path.c_str(), ignored, options);
  const std::string sum = fetched ? Sha256OfFile(path) : "";
  unlink(path.c_str());
  return sum;
}

Finding FindOutState(Host& host, const JournalEntry& entry) {
  if (entry.step == "checkout") return FindCheckout(entry);
  if (entry.step == "checkin" || entry.step == "undo") return FindEnd(entry);
  if (entry.step == "store") return FindStore(host, entry);
  if (entry.step == "iterate") return FindIteration(host, entry);
  if (entry.step == "create") return FindCreation(host, entry);
  if (entry.step == "xliff put") return FindSentXliff(host, entry);
  if (entry.step == "xliff publish") return FindPublication(entry);
  return NotKnown(entry.address);
}

void SettleEntry(Host& host, const JournalEntry& entry, const Finding& finding) {
  if (!finding.isKnown) return;
  // A checkout that can't be kept stays in the journal, which is then the one place that knows of it.
  if (!finding.workingCopy.empty() && !KeepCheckout(host, entry.uid, finding.workingCopy)) return;
  if (finding.hasEnded) {
    // The library deletes the workspace and has nothing else left to undo. It may be gone already.
    if (IsTemporaryCopy(entry.uid)) static_cast<void>(VtDirectManager::UndoCheckout(entry.uid.c_str()));
    ForgetCheckout(host, entry.uid);
  }
  if (finding.isSame && entry.step == "store") KeepForCommit(entry);
  const std::string fault = Journal().StrikeOut(entry);
  if (!fault.empty()) host.output().Warning("the entry is still in the journal: " + fault);
  // Reads the whole content, and is not needed to settle the change.
  if (finding.hasEnded) KeepContentIfCheckedIn(host, entry);
}

void SettleRepeated(Host& host, const std::string& step, const std::string& uid) {
  const auto open = Journal().Open();
  if (!open) return;
  for (const JournalEntry& entry : open->entries) {
    if (entry.step == step && AreSameUid(entry.uid, uid)) SettleEntry(host, entry, Known({}));
  }
}

void WarnOfOpenEntries(Host& host, const std::vector<std::string>& urls) {
  const auto open = Journal().Open();
  if (!open) return host.output().Warning(open.failure().message);
  if (!open->fault.empty()) host.output().Warning(open->fault);
  std::size_t warned = 0;
  for (const JournalEntry& entry : open->entries) {
    const std::string url = VtDirectManager::GetServerURL(entry.uid.c_str());
    const bool isUsed = !url.empty() && std::find(urls.begin(), urls.end(), url) != urls.end();
    if (!isUsed || Interrupted()) continue;
    if (++warned > mostWarnings) {
      host.output().Warning(
          "there are more changes that were not confirmed; \"vtdirect recover\" settles them");
      break;
    }
    host.output().Warning(WithArticle(entry.step) + " of " + entry.address + " was begun " + entry.since +
                          " and not confirmed: " + FindOutState(host, entry).words +
                          "; \"vtdirect recover\" settles it");
  }
  ForgetReasons();
}

}  // namespace vtdirect_cli
