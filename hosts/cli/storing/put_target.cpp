#include "hosts/cli/storing/put_target.h"

#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/copy_search.h"
#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/presence.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/escaped_name.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] bool IsFolder(const std::string& path) {
  return VtDirectManager::OpenDir(WithClosingSlash(path).c_str()) != nullptr;
}

[[nodiscard]] std::string FolderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

[[nodiscard]] bool NamesVersion(const std::string& path) {
  return path.find('|', path.rfind('/')) != std::string::npos;
}

[[nodiscard]] Failure Unsent(const std::string& text, const std::string& next,
                             FailureClass failureClass = FailureClass::OfExitCode) {
  return WithNothing("sent", {ExitCode::Failure, text, next, std::nullopt, failureClass});
}

// Names are sent as text, and no text has such bytes.
[[nodiscard]] std::optional<Failure> RequireName(const std::string& path) {
  if (ValidUtf8(path) == path) return std::nullopt;
  return Failure{ExitCode::Usage, "no document can be called " + path.substr(path.rfind('/') + 1) +
                                      ": its name is no UTF-8; name the document after the folder's path"};
}

// Only a place below a context's folders, or in a workspace, takes documents. No request is made for this.
[[nodiscard]] std::optional<Failure> RequirePlaceForDocuments(const std::string& path) {
  if (VtDirectManager::IsPathWritable(path.c_str())) return std::nullopt;
  return Failure{ExitCode::Usage, "no document can be at " + path +
                                      ": documents are in .../Folders/ and below, and in "
                                      ".../Workspaces/NAME/"};
}

// The library would let a server without the folder choose another one.
[[nodiscard]] Result<PutTarget> SettleCreation(Host& host, const PutRequest& request,
                                               const std::string& path) {
  if (IsById(request.address, request.kind)) return Diagnose(host, request.address, Seen::Missing);
  const bool folderGiven = path != request.address;
  if (!folderGiven && NamesVersion(path)) {
    return WithNothing("sent", {ExitCode::NotFound, "not found: " + path,
                                "to create it leave the version away, which the server chooses"});
  }
  if (!folderGiven && IsFolder(path)) {
    return Unsent(path + " is a folder", "close it with \"/\" to put the file into it");
  }
  const std::string folder = FolderOf(path);
  if (IsFolder(folder)) return PutTarget{.action = PutTarget::Action::Create, .address = path};
  if (auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(path.c_str()))) return *failure;
  return WithNothing("sent", {ExitCode::NotFound, "there is no folder " + folder + " that you can see"});
}

[[nodiscard]] Failure HiddenByNamesake(const std::string& path, const std::string& namesake) {
  return Unsent("there is a document " + path +
                    " already, and the server leads this path to another one of that name, " + namesake,
                "give the UID of the document that is meant");
}

// The path leads to a document of the name in another folder. On such a server it may do so also when the
// folder has one of its own, so the folder's listing decides.
// @param elsewhere  that it does, or that this could not be found out
[[nodiscard]] Result<PutTarget> SettleBesideNamesake(Host& host, const PutRequest& request,
                                                     const std::string& path, const std::string& namesake,
                                                     const Failure& elsewhere) {
  if (NamesVersion(path) || elsewhere.code != ExitCode::NotFound) return elsewhere;
  auto target = SettleCreation(host, request, path);
  if (!target) return target;
  target->hasNamesake = true;
  switch (PresenceInFolder(path)) {
    case Presence::Gone:
      return target;
    case Presence::There:
      return HiddenByNamesake(path, namesake);
    default:
      return Unsent("whether there is a document " + path + " already could not be found out",
                    "the same command can be given again");
  }
}

[[nodiscard]] Failure CheckedOutElsewhere(const std::string& uid) {
  return Unsent("you have " + uid + " checked out, but no working copy of it is kept here",
                "give the UID or the path of the working copy (.../Workspaces/NAME/...)",
                FailureClass::Conflict);
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
[[nodiscard]] Failure LostCheckout(const std::string& uid) {
  return Unsent("the checkout " + uid + " that is kept here has ended",
                CommandToType("verify", uid) + " tells the state of the checkout");
}

// A store needs the workspace, which the id alone of a working copy does not tell. What the copy was taken from
// is in none.
[[nodiscard]] Result<PutTarget> StoreInto(const std::string& uid, bool isTemporary) {
  const std::string workingCopy = WithWorkspace(uid);
  if (!HasWorkspace(workingCopy)) return CheckedOutElsewhere(workingCopy);
  return PutTarget{.action = PutTarget::Action::Store,
                   .address = workingCopy,
                   .temporary = isTemporary,
                   .before = isTemporary ? ByOwnId(workingCopy) : workingCopy};
}

[[nodiscard]] PutTarget IterationOf(const std::string& uid) {
  const std::string document = WithoutWorkspace(uid);
  return {.action = PutTarget::Action::Iterate, .address = document, .before = document};
}

// The state of the checkout was not told. That is an end of what is kept only if the server says that there is
// nothing.
[[nodiscard]] Failure WhyUnknown(Host& host, const std::string& uid, bool isKept) {
  const auto reason = LastReason();
  if (auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(uid.c_str()))) return *failure;
  const bool isMissing = !reason || reason->kind == VtDirectManager::FailureKind::NotFound;
  return isKept && isMissing ? LostCheckout(uid) : ObjectFailure(host, uid, reason);
}

[[nodiscard]] Result<PutTarget> SettleByState(Host& host, const std::string& uid, bool isKept,
                                              const CheckoutState& state) {
  switch (state.status) {
    case VtDirectManager::CheckoutNone:
    case VtDirectManager::CheckoutUnsupported:
      if (isKept) return LostCheckout(uid);
      return IterationOf(uid);
    case VtDirectManager::CheckoutInTempWorkspace:
    case VtDirectManager::CheckoutInWorkspace:
      return StoreInto(uid, state.status == VtDirectManager::CheckoutInTempWorkspace);
    case VtDirectManager::CheckoutByOther:
      return Unsent(uid + " is checked out by " + state.user,
                    "it takes a new iteration when it is checked in", FailureClass::Locked);
    case VtDirectManager::CheckoutByUserUnrecorded:
      return isKept ? LostCheckout(uid) : CheckedOutElsewhere(uid);
    case VtDirectManager::CheckoutNotPossible:
      return Unsent(uid + " is not the newest iteration",
                    "give the UID of the newest one, or its path without a version", FailureClass::Conflict);
    default:
      return WhyUnknown(host, uid, isKept);
  }
}

[[nodiscard]] Result<PutTarget> SettleExisting(Host& host, const PutRequest& request,
                                               const std::string& uid) {
  const bool isKept = CheckoutBook().Find(uid).has_value();
  CheckoutState state = ReadCheckoutState(uid);
  if (isKept) return SettleByState(host, uid, isKept, state);
  const auto found = CopyToGoOnWith(host, request.address, state.status, uid);
  if (!found) return found.failure();
  if (found->uid != uid) state.status = VtDirectManager::CheckoutInTempWorkspace;
  return SettleByState(host, found->uid, isKept, state);
}

// The server tells of no document what kind it has, and the library leaves out what a kind has not.
[[nodiscard]] Failure MayDropParts(const PutRequest& request) {
  return Unsent(request.address +
                    " is there already, and if it is a Fenlet document, a content of another kind "
                    "drops its viewable, metadata and links",
                "give --force to store it all the same");
}

}  // namespace

const ActionWords& WordsOf(PutTarget::Action action) {
  static constexpr ActionWords create = {"create", "created", "creating "};
  static constexpr ActionWords iterate = {"iterate", "iterated", "making a new iteration of "};
  static constexpr ActionWords store = {"store", "stored", "storing into the working copy "};
  if (action == PutTarget::Action::Create) return create;
  return action == PutTarget::Action::Iterate ? iterate : store;
}

std::string PathToStoreAt(const PutTarget& target) {
  return target.hasNamesake ? target.address + "|-.0" : target.address;
}

Result<PutTarget> SettlePutTarget(Host& host, const PutRequest& request) {
  const bool byId = IsById(request.address, request.kind);
  std::string path = request.address;
  if (!byId && path.ends_with('/')) path += EscapedName(BaseNameOf(request.content.path));
  if (auto failure = RequireName(path)) return *failure;
  if (!byId) {
    if (auto failure = RequirePlaceForDocuments(path)) return *failure;
  }
  ForgetReasons();
  const VtDirectManager::Outcome outcome;
  const std::string uid = VtDirectManager::GetUID(path.c_str());
  // A name that could not be asked for may be taken.
  if (uid.empty() && AnswerIsMissing(outcome)) return Diagnose(host, path, Seen::Missing);
  if (uid.empty()) return SettleCreation(host, request, path);
  if (const auto elsewhere = RefusalOfAnotherPlace(path, uid)) {
    return SettleBesideNamesake(host, request, path, uid, *elsewhere);
  }
  if (request.type != VtDirectManager::FileTypeFenlet && !request.force) return MayDropParts(request);
  return SettleExisting(host, request, UidToGoOnWith(host, uid));
}

}  // namespace vtdirect_cli
