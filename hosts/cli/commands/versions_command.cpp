#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/browsing/listing.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/many/batch_options.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

struct Version {
  std::string version;
  std::string uid;
};

// How far the versions of an object could be found out.
enum class Extent {
  Complete,
  NotShown,   // no listing shows the versions of this object
  LeftOut,    // the listing of its folder doesn't have it
  BrokenOff,  // that listing ended before it
};

struct History {
  std::vector<Version> versions;
  Extent extent = Extent::NotShown;
  std::string folder;         // whose listing was read
  std::uint64_t entries = 0;  // of that listing
};

// A version's UID: the server of the object's own, with the id of that version.
[[nodiscard]] std::string UidOfVersion(const std::string& uid, const char* id) {
  const auto parsed = VtDirectManager::ParseUID(uid.c_str());
  return id == nullptr || !parsed ? "" : parsed->server + "?id=" + id;
}

void Keep(const VtDirectManager::DirEntryExt& entry, const std::string& uid, History& history) {
  const char** id = entry.versionIds;
  for (const char** version = entry.versions; *version != nullptr; ++version) {
    history.versions.push_back({*version, id == nullptr ? "" : UidOfVersion(uid, *id)});
    if (id != nullptr && *id != nullptr) ++id;
  }
  history.extent = Extent::Complete;
}

// Looks for the document in a listing of its folder, and ends that where it is.
[[nodiscard]] History FromFolder(const std::string& path, const std::string& uid) {
  History history;
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos || !VtDirectManager::CanPathShowVersions(path.c_str())) return history;
  const std::string name = path.substr(slash + 1);
  history.folder = path.substr(0, slash + 1);
  const auto receive = [&](const VtDirectManager::DirEntryExt& entry) {
    ++history.entries;
    if (entry.isFolder || name != entry.name) return true;
    if (entry.versions != nullptr) Keep(entry, uid, history);
    return false;
  };
  const ListingEnd end =
      ListPath(history.folder, VtDirectManager::ReadDirFiles | VtDirectManager::ReadDirVersions, receive);
  if (end == ListingEnd::Broken) history.extent = Extent::BrokenOff;
  if (end == ListingEnd::Whole) history.extent = Extent::LeftOut;
  return history;
}

// What every server tells: this version and the newest.
void AddFromObject(const std::string& uid, const Version& latest, History& history) {
  std::string current;
  std::string newest;
  const int status = VtDirectManager::GetStatus(uid.c_str(), current, newest, nullptr);
  if (status == 1) history.versions.push_back({current, uid});
  history.versions.push_back(latest);
}

// A listing that broke off is a failure, and no note.
void NoteWhatIsLacking(Host& host, Extent extent, bool listsCadDocuments) {
  const std::string shown = ": shown are the version of the object and the newest";
  if (extent == Extent::NotShown) host.output().Note("this server lists no versions here" + shown);
  if (extent != Extent::LeftOut) return;
  host.output().Note("the listing of the folder does not show this object" + shown +
                     (listsCadDocuments ? "" : "; CAD documents are listed with --cad"));
}

// Of several documents each row has its address at the end.
void Show(Host& host, const std::string& address, bool isOfMany, const History& history,
          const std::string& latest) {
  for (const Version& version : history.versions) {
    const bool newest = version.version == latest;
    Record shown{{"version", version.version}, {"uid", version.uid}};
    if (newest || isOfMany) shown.emplace_back("latest", std::string(newest ? "latest" : ""));
    if (isOfMany) shown.emplace_back("address", address);
    host.output().Row(shown, {{"address", address},
                              {"version", version.version},
                              {"uid", version.uid},
                              {"latest", newest},
                              {"complete", history.extent == Extent::Complete}});
  }
}

[[nodiscard]] ExitCode TellVersions(Host& host, const Arguments& arguments, const std::string& address) {
  const auto kind = RequirePlacedAddress(host, arguments, address);
  if (!kind) return host.output().Fail(kind.failure());

  ForgetReasons();
  Version latest;
  const std::string uid = VtDirectManager::GetUID(address.c_str());
  if (!uid.empty()) ForgetReasons();
  const bool isTold = !uid.empty() && VtDirectManager::GetLatest(address.c_str(), latest.version, latest.uid);
  if (!isTold || LastAnswerWasBroken()) {
    return host.output().Fail(Diagnose(host, address, Seen::Missing));
  }
  const std::string path = VtDirectManager::GetVFSPathLatest(PlacedAddress(address, *kind).c_str());
  History history = FromFolder(path, uid);
  if (history.extent != Extent::Complete) AddFromObject(uid, latest, history);
  Show(host, address, IsForMany(arguments), history, latest.version);
  if (history.extent == Extent::BrokenOff) {
    return host.output().Fail(DiagnoseDirectory(host, history.folder, history.entries));
  }
  NoteWhatIsLacking(host, history.extent, arguments.Has("cad"));
  return ExitCode::Ok;
}

ExitCode RunVersions(Host& host, const Arguments& arguments) {
  return ReadEach(host, arguments, Wanted::Documents, TellVersions);
}

[[nodiscard]] std::vector<OptionRow> Options() {
  std::vector<OptionRow> options = {AnywhereOption()};
  for (const OptionRow& row : ReadingManyOptions()) options.push_back(row);
  return options;
}

}  // namespace

CommandRow VersionsCommand() {
  return AsListing(
      {"versions",
       "List the versions of a document",
       "Prints version and UID of each version of the document at ADDRESS, separated by a tab, and "
       "\"latest\" after the newest.\n\nA server that lists versions, from schema 5 on, tells them in the "
       "listing of the document's folder, which is read up to the document; the order is that listing's. Of "
       "any other server, of a document in a workspace, and of a CAD document without --cad, the object's "
       "own version and the newest are all that can be had; a note says so, and with --json \"complete\" is "
       "false. The same two are printed when the listing breaks off, which gives exit status 11.\n\nOf "
       "several documents each line ends with the document's address, after a column that is \"latest\" or "
       "empty.",
       {{"ADDRESS", "A path, a pattern or a UID; see ADDRESSES. May be given several times.",
         Count::AtLeastOnce}},
       Options(),
       Requests::Some,
       RunVersions,
       {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
        {"version", MemberType::Text, nullptr, "the version"},
        {"uid", MemberType::Text, nullptr, "UID of this version"},
        {"latest", MemberType::Flag, nullptr, "whether it is the newest"},
        {"complete", MemberType::Flag, nullptr, "whether the lines show every version there is"}}},
      {"version", "uid", "address"}, "Sort the lines by this column: version, uid or address.");
}

}  // namespace vtdirect_cli
