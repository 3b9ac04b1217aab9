#include "hosts/cli/storing/put_target.h"

#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/copy_search.h"
#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/standing.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/diagnosis.h"
#include "hosts/cli/files/escaped_name.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/trace_log.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::VtCheckoutStatus;

[[nodiscard]] bool IsFolder(const std::string& path) {
  return VtDirectManager::OpenDir(WithClosingSlash(path).c_str()) != nullptr;
}

[[nodiscard]] std::string FolderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

[[nodiscard]] bool NamesVersion(const std::string& path) {
  return path.find('|', path.rfind('/')) != std::string::npos;
}

[[nodiscard]] Failure Unsent(const std::string& text, const std::string& next) {
  return {ExitCode::Failure, text + "; nothing was sent; " + next};
}

// Names are sent as text, and no text has such bytes.
[[nodiscard]] std::optional<Failure> RequireName(const std::string& path) {
  if (ValidUtf8(path) == path) return std::nullopt;
  return Failure{ExitCode::Usage, "no document can be called " + path.substr(path.rfind('/') + 1) +
                                      ": its name is no UTF-8; name the document behind the folder's path"};
}

// Only a place below a context's folders, or in a workspace, takes documents. No request is made for this.
[[nodiscard]] std::optional<Failure> RequirePlaceForDocuments(const std::string& path) {
  if (VtDirectManager::IsPathWritable(path.c_str())) return std::nullopt;
  return Failure{ExitCode::Usage, "no document can stand at " + path +
                                      ": documents stand in .../Folders/ and below, and in "
                                      ".../Workspaces/NAME/"};
}

// The library would let a server without the folder choose another one.
[[nodiscard]] std::optional<Failure> SettleCreation(Host& host, const PutRequest& request,
                                                    PutTarget& target) {
  if (IsById(request.address, request.kind)) return Diagnose(host, request.address, true);
  const std::string& path = target.address;
  const bool folderGiven = path != request.address;
  if (!folderGiven && NamesVersion(path)) {
    return Failure{ExitCode::NotFound, "not found: " + path +
                                           "; nothing was sent; to create it leave the version away, which "
                                           "the server chooses"};
  }
  if (!folderGiven && IsFolder(path)) {
    return Unsent(path + " is a folder", "close it with \"/\" to put the file into it");
  }
  const std::string folder = FolderOf(path);
  if (IsFolder(folder)) {
    target.action = PutTarget::Action::Create;
    return std::nullopt;
  }
  if (auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(path.c_str()))) return failure;
  return Failure{ExitCode::NotFound, "there is no folder " + folder + " that you can see; nothing was sent"};
}

[[nodiscard]] Failure HiddenByNamesake(const std::string& path, const std::string& namesake) {
  return Unsent("there is a document " + path +
                    " already, and the server leads this path to another one of that "
                    "name, " +
                    namesake,
                "give the UID of the document that is meant");
}

// The path leads to a document of the name in another folder. On such a server it may do so also when the
// folder has one of its own, so the folder's listing decides.
[[nodiscard]] std::optional<Failure> SettleBesideNamesake(Host& host, const PutRequest& request,
                                                          const std::string& namesake,
                                                          const Failure& elsewhere, PutTarget& target) {
  if (NamesVersion(target.address) || elsewhere.code != ExitCode::NotFound) return elsewhere;
  if (auto failure = SettleCreation(host, request, target)) return failure;
  target.hasNamesake = true;
  switch (PresenceInFolder(target.address)) {
    case Presence::Gone:
      return std::nullopt;
    case Presence::There:
      return HiddenByNamesake(target.address, namesake);
    default:
      return Unsent("whether there is a document " + target.address + " already could not be found out",
                    "the same command can be given again");
  }
}

[[nodiscard]] Failure CheckedOutElsewhere(const PutTarget& target) {
  return Unsent("you have " + target.address + " checked out, but no working copy of it is kept here",
                "give the UID or the path of the working copy (.../Workspaces/NAME/...)");
}

// A workspace may hold a document that isn't checked out. It is the document that gets an iteration.
[[nodiscard]] std::string WithoutWorkspace(const std::string& uid) {
  if (!HasWorkspace(uid) || IsTemporaryCopy(uid)) return uid;
  const std::string url = VtDirectManager::GetServerURL(uid.c_str());
  const std::string plain =
      VtDirectManager::UIDFromVantryParams(url.c_str(), DocumentIdOf(uid).c_str(), nullptr, false);
  return plain.empty() ? uid : plain;
}

// What was kept is no checkout any more: it was checked in or undone by other means.
[[nodiscard]] Failure LostCheckout(const PutTarget& target) {
  return Unsent("the checkout " + target.address + " that is kept here does not stand any more",
                CommandToType("verify", target.address) + " tells what stands");
}

[[nodiscard]] std::optional<Failure> SettleByStatus(Host& host, VtCheckoutStatus status,
                                                    const std::string& user, bool kept, PutTarget& target) {
  switch (status) {
    case VtDirectManager::CheckoutNone:
    case VtDirectManager::CheckoutUnsupported:
      if (kept) return LostCheckout(target);
      target.action = PutTarget::Action::Iterate;
      target.address = WithoutWorkspace(target.address);
      return std::nullopt;
    case VtDirectManager::CheckoutInTempWorkspace:
    case VtDirectManager::CheckoutInWorkspace:
      // A store needs the workspace, which the id alone of a working copy does not tell. What the copy was
      // taken from stands in none.
      target.address = WithWorkspace(target.address);
      if (!HasWorkspace(target.address)) return CheckedOutElsewhere(target);
      target.action = PutTarget::Action::Store;
      target.temporary = status == VtDirectManager::CheckoutInTempWorkspace;
      return std::nullopt;
    case VtDirectManager::CheckoutByOther:
      return Unsent(target.address + " is checked out by " + user,
                    "it takes a new iteration when it is checked in");
    case VtDirectManager::CheckoutByUserUnrecorded:
      return kept ? LostCheckout(target) : CheckedOutElsewhere(target);
    case VtDirectManager::CheckoutNotPossible:
      return Unsent(target.address + " is not the newest iteration",
                    "give the UID of the newest one, or its path without a version");
    default:
      if (auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(target.address.c_str()))) {
        return failure;
      }
      return kept ? LostCheckout(target) : Failure{ExitCode::NotFound, "not found: " + target.address};
  }
}

// The server tells of no document what kind it has, and the library leaves out what a kind has not.
[[nodiscard]] Failure MayDropParts(const PutRequest& request) {
  return Unsent(request.address +
                    " is there already, and if it is a Fenlet document, a content of another kind "
                    "drops its viewable, metadata and links",
                "give --force to store it all the same");
}

[[nodiscard]] std::optional<Failure> SettleExisting(Host& host, const PutRequest& request,
                                                    PutTarget& target) {
  const bool kept = CheckoutBook().Find(target.address).has_value();
  CheckoutState state = ReadCheckoutState(target.address);
  if (!kept) {
    const CopySearch found = CopyToGoOnWith(host, request.address, state.status, target.address);
    if (found.failure) return found.failure;
    if (found.uid != target.address) state.status = VtDirectManager::CheckoutInTempWorkspace;
    target.address = found.uid;
  }
  return SettleByStatus(host, state.status, state.user, kept, target);
}

}  // namespace

std::string PathToStoreAt(const PutTarget& target) {
  return target.hasNamesake ? target.address + "|-.0" : target.address;
}

std::optional<Failure> SettlePutTarget(Host& host, const PutRequest& request, PutTarget& target) {
  const bool byId = IsById(request.address, request.kind);
  target.address = request.address;
  if (!byId && target.address.ends_with('/')) target.address += EscapedName(BaseNameOf(request.content.path));
  if (auto failure = RequireName(target.address)) return failure;
  if (!byId) {
    if (auto failure = RequirePlaceForDocuments(target.address)) return failure;
  }
  ForgetTracedErrors();
  const std::string uid = VtDirectManager::GetUID(target.address.c_str());
  if (uid.empty()) return SettleCreation(host, request, target);
  if (const auto elsewhere = RefusalOfAnotherPlace(target.address, uid)) {
    return SettleBesideNamesake(host, request, uid, *elsewhere, target);
  }
  if (request.type != VtDirectManager::FileTypeFenlet && !request.force) return MayDropParts(request);
  target.address = UidToGoOnWith(host, uid);
  if (auto failure = SettleExisting(host, request, target)) return failure;
  target.before = target.temporary ? ByOwnId(target.address) : target.address;
  return std::nullopt;
}

}  // namespace vtdirect_cli
