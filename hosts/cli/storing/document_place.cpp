#include "hosts/cli/storing/document_place.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/browsing/listing.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/escaped_name.h"

namespace vtdirect_cli {
namespace {

// The names of a path after the server's, each written in one way. Several names may stand for one server.
[[nodiscard]] std::vector<std::string> NamesOf(std::string_view path) {
  std::vector<std::string> names;
  if (const std::size_t server = path.find("//"); server != std::string_view::npos) {
    path.remove_prefix(server + 2);
    path.remove_prefix(std::min(path.find('/'), path.size()));
  }
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/'), path.size());
    if (end > 0) names.push_back(NormalizedName(path.substr(0, end)));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return names;
}

// Where a document is, compared with its path.
struct Place {
  Presence presence = Presence::There;  // at the path; also for a document that is in no folder
  std::string folder;                   // the one that it is in instead
  std::optional<Reason> reason;         // why it is not known
};

[[nodiscard]] Place PlaceOf(const std::string& address, const std::string& uid) {
  const auto kind = ClassifyAddress(address);
  if (uid.empty() || !kind || IsById(address, *kind)) return {};
  const VtDirectManager::Outcome outcome;
  const std::string folder = VtDirectManager::GetVFSFolderPath(uid.c_str());
  if (folder.empty() && AnswerIsMissing(outcome)) return {Presence::NotKnown, {}, outcome.Cause()};
  if (folder.empty()) return {};
  const bool isThere = NamesOf(folder) == NamesOf(address.substr(0, address.rfind('/')));
  return {isThere ? Presence::There : Presence::Gone, folder, {}};
}

[[nodiscard]] Failure NotToldFailure(const std::string& address, const std::optional<Reason>& reason) {
  return {ExitCode::Failure,
          "in which folder the document of the name is that " + address +
              " leads to could not be found out (" + WordsOf(*reason) + ")",
          "the same command can be given again", reason};
}

}  // namespace

std::optional<Failure> FailureOfAnotherPlace(const std::string& address, const std::string& uid) {
  const Place place = PlaceOf(address, uid);
  if (place.presence == Presence::There) return std::nullopt;
  if (place.presence == Presence::NotKnown) return NotToldFailure(address, place.reason);
  return Failure{ExitCode::NotFound,
                 "not found: " + address + "; the document of that name, " + uid + ", is in " +
                     WithClosingSlash(place.folder),
                 "give its own address if it is meant"};
}

std::optional<Failure> RefusalOfAnotherPlace(const std::string& address, const std::string& uid) {
  auto failure = FailureOfAnotherPlace(address, uid);
  if (!failure) return std::nullopt;
  return WithNothing("changed", std::move(*failure));
}

OptionRow AnywhereOption() {
  return {
      .name = "anywhere",
      .help = "Take the document of that name in whichever folder it is, as the server's search finds it."};
}

Result<AddressKind> RequirePlacedAddress(Host& host, const Arguments& arguments, const std::string& address) {
  const auto kind = RequireAddress(address);
  if (!kind || arguments.Has("anywhere") || IsById(address, *kind) || address.ends_with('/')) return kind;
  const VtDirectManager::Outcome outcome;
  const std::string uid = VtDirectManager::GetUID(address.c_str());
  // The next question may be answered, and lead to a document whose place nobody has looked at.
  if (uid.empty() && AnswerIsMissing(outcome)) return Diagnose(host, address, Seen::Missing);
  auto refusal = FailureOfAnotherPlace(address, uid);
  if (!refusal) return kind;
  if (refusal->code == ExitCode::NotFound) refusal->advice += ", or --anywhere";
  return *refusal;
}

Result<std::string> UidAtPlace(const std::string& path) {
  const VtDirectManager::Outcome outcome;
  const std::string uid = VtDirectManager::GetUID(path.c_str());
  if (uid.empty() && AnswerIsMissing(outcome))
    return WithNothing("changed", NotToldFailure(path, outcome.Cause()));
  const Place place = PlaceOf(path, uid);
  if (place.presence == Presence::NotKnown) return WithNothing("changed", NotToldFailure(path, place.reason));
  return place.presence == Presence::There ? uid : std::string();
}

Presence PresenceInFolder(const std::string& path) {
  const std::size_t nameAt = path.rfind('/') + 1;
  const std::string name = NormalizedName(path.substr(nameAt));
  const auto isOther = [&name](const VtDirectManager::DirEntryExt& entry) {
    return entry.isFolder || NormalizedName(TextOrEmpty(entry.name)) != name;
  };
  switch (ListPath(path.substr(0, nameAt), VtDirectManager::ReadDirFiles, isOther)) {
    case ListingEnd::Whole:
      return Presence::Gone;
    case ListingEnd::Stopped:
      return Presence::There;
    default:
      return Presence::NotKnown;
  }
}

}  // namespace vtdirect_cli
