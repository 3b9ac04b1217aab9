#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/copy_search.h"
#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/presence.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/content_download.h"
#include "hosts/cli/many/batch_options.h"
#include "hosts/cli/many/get_many.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Failure NotFetched(const std::string& what, const std::string& next) {
  return {ExitCode::Failure, what + "; nothing was fetched", next};
}

[[nodiscard]] std::string BaseInstead(const std::string& address) {
  return CommandToType("get --base", address) + " fetches the content from before the checkout";
}

// What is fetched, and what it is called to go on with.
struct Content {
  std::string source;           // empty for the address itself
  std::string uidToGoOnWith{};  // empty for the source's UID
  bool isOfWorkingCopy = false;
};

// The content of the working copy, which the library gives for its own id alone: the UID of a temporary
// checkout reads as the document that was checked out.
[[nodiscard]] Result<Content> ContentOfCopy(Host& host, const std::string& address, const std::string& uid,
                                            const std::string& workingCopy) {
  switch (PresenceOfWorkingCopy(workingCopy)) {
    case Presence::There:
      return Content{.source = ByOwnId(workingCopy), .uidToGoOnWith = workingCopy, .isOfWorkingCopy = true};
    case Presence::Gone:
      if (IsTemporaryCopy(uid)) {
        return NotFetched("the working copy " + uid + " is not there any more",
                          CommandToType("verify", uid) + " tells what is; " + BaseInstead(address));
      }
      host.output().Note("the working copy of " + address +
                         " that is kept here is not there any more; this is the document's own content");
      return Content{.source = uid};
    default:
      return NotFetched("whether the working copy " + workingCopy + " is there could not be found out",
                        "the same command can be given again; " + BaseInstead(address));
  }
}

// Of a working copy that is not kept here, or of the document itself.
[[nodiscard]] Result<Content> ContentOnServer(Host& host, const std::string& address,
                                              const std::string& uid) {
  const auto status = ReadCheckoutState(uid).status;
  const auto found = CopyToGoOnWith(host, address, status, uid);
  if (!found) {
    Failure failure = found.failure();
    failure.advice += (failure.advice.empty() ? "" : "; ") + BaseInstead(address);
    return failure;
  }
  if (IsTemporaryCopy(found->uid)) {
    return Content{.source = ByOwnId(found->uid), .uidToGoOnWith = found->uid, .isOfWorkingCopy = true};
  }
  // The walk to a path's document need not be made twice.
  return Content{.source = VtDirectManager::IsUID(address.c_str()) ? "" : uid,
                 .isOfWorkingCopy = status == VtDirectManager::CheckoutInWorkspace};
}

// What a user means by a document that they have checked out is its working copy, unless they say otherwise.
[[nodiscard]] Result<Content> SettleContent(Host& host, const Arguments& arguments,
                                            const std::string& address) {
  const VtDirectManager::Outcome outcome;
  const std::string uid = VtDirectManager::GetUID(address.c_str());
  // To fetch by the address all the same would give the base of what is checked out.
  if (uid.empty() && AnswerIsMissing(outcome)) {
    if (auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(address.c_str()))) return *failure;
    return NotFetched("which document " + address + " leads to could not be found out",
                      "the same command can be given again");
  }
  if (uid.empty()) return Content{};
  const auto kept = CheckoutBook().Find(uid);
  if (arguments.Has("base")) {
    return Content{ByDocumentId(kept && AreSameUid(kept->uid, uid) ? kept->document : uid), {}};
  }
  if (kept || IsTemporaryCopy(uid)) return ContentOfCopy(host, address, uid, kept ? kept->uid : uid);
  return ContentOnServer(host, address, uid);
}

// Where the content comes from and where it goes, with nothing fetched yet.
// @param place  the file that it goes to whatever -o says; empty for what -o says
[[nodiscard]] Result<Download> SettleGet(Host& host, const Arguments& arguments, const std::string& address,
                                         const std::string& place) {
  const auto kind = RequirePlacedAddress(host, arguments, address);
  if (!kind) return kind.failure();
  auto download = SettleDownload(host, arguments, address, place);
  if (!download) return download.failure();
  const auto content = SettleContent(host, arguments, address);
  if (!content) return content.failure();
  if (Interrupted()) return InterruptedFailure();
  download->described = {{"address", address}};
  download->source = content->source;
  download->uidToGoOnWith = content->uidToGoOnWith;
  download->isOfWorkingCopy = content->isOfWorkingCopy;
  return *download;
}

ExitCode RunGet(Host& host, const Arguments& arguments) {
  if (const auto failure = CheckDownloadOptions(host, arguments)) return host.output().Fail(*failure);
  if (IsForMany(arguments)) return GetMany(host, arguments, SettleGet);
  auto download = SettleGet(host, arguments, arguments.Text("ADDRESS"), {});
  if (!download) return host.output().Fail(download.failure());
  return RunDownload(host, *download);
}

[[nodiscard]] std::vector<OptionRow> Options() {
  std::vector<OptionRow> options = {
      AnywhereOption(),
      {.name = "base",
       .help = "Of a document that you have checked out, fetch the content from before the checkout."}};
  for (const OptionRow& row : DownloadOptions()) options.push_back(row);
  for (const OptionRow& row : GetManyOptions()) options.push_back(row);
  return options;
}

[[nodiscard]] std::vector<MemberRow> Members() {
  std::vector<MemberRow> members = {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"}};
  for (const MemberRow& row : DownloadMembers()) members.push_back(row);
  return members;
}

}  // namespace

CommandRow GetCommand() {
  return {
      "get",
      "Download an object's content",
      "Downloads the content of the object at ADDRESS. Of a document that is checked out by vtdirect (see "
      "checkouts) it is the working copy's, with all that was stored in it; --base asks for the content from "
      "before the checkout. A path must lead to a document where it says; --anywhere takes the one of that "
      "name wherever it is.\n\n"
      "It is written to a temporary file beside the target, brought to the disk and renamed into place, so "
      "that a download that fails or is interrupted never harms what was there. A symbolic link is followed, "
      "also to a file that is not there yet: the file that it leads to is replaced, and the link stays. A "
      "device or a pipe is written into.\n\n"
      "Only a file that vtdirect has saved, or stored with put, and that nobody has changed since is "
      "replaced: what get has saved is recorded, with size and SHA-256, in $XDG_STATE_HOME/vtdirect/fetched "
      "or ~/.local/state/vtdirect/fetched. Any other file takes --force, also one of a work folder, which "
      "pull "
      "brings up to date, and so does one that was stored in "
      "a working copy, or saved from it, when something else than that copy is fetched: its checkout may "
      "have been undone, here or elsewhere. A write-protected file is never replaced. A file that is "
      "replaced keeps its permissions, and its group where you may give it.\n\n"
      "Without -o the file name is that of the object, escaped as in a path (the characters |\\/<>:\"?*% as "
      "%hh), in the current directory. A dot in front, control characters and those that turn the direction "
      "of writing are escaped too, so that no name leads out of the directory, hides in it or looks like "
      "another.\n\n"
      "Several documents go to the current directory, or to the directory that -o names, --parallel at a "
      "time. With -r a folder is fetched as a directory of its name, with all that is below it; directories "
      "are made. Each document gets a file of its own: of two that would have the same name, the second one "
      "is called \"fork%(2).lxz\", and in one folder it is called by its number, \"fork%(0000100002).lxz\". "
      "If one fails, the others go on: all failures are told once more at the end, and the exit "
      "status is that of the worst. A document of a folder that has no content yet is no failure; a warning "
      "tells of it. With --json, address is the path of a document that a folder or a pattern has led to.",
      {{"ADDRESS", "A path, a pattern or a UID; see ADDRESSES. May be given several times.",
        Count::AtLeastOnce}},
      Options(),
      Requests::Some,
      RunGet,
      Members()};
}

}  // namespace vtdirect_cli
