#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/address.h"
#include "hosts/cli/command.h"
#include "hosts/cli/diagnosis.h"
#include "hosts/cli/host.h"
#include "hosts/cli/listing.h"
#include "hosts/cli/trace_log.h"

namespace vtdirect_cli {
namespace {

struct Version {
  std::string version;
  std::string uid;
};

// What was found out of one object.
struct History {
  std::vector<Version> versions;
  bool complete = false;
};

// A version's UID: the server of the object's own, with the id of that version.
[[nodiscard]] std::string UidOfVersion(const std::string& uid, const char* id) {
  return id == nullptr ? "" : uid.substr(0, uid.find("?id=")) + "?id=" + id;
}

void Keep(const VtDirectManager::DirEntryExt& entry, const std::string& uid, History& history) {
  const char** id = entry.versionIds;
  for (const char** version = entry.versions; *version != nullptr; ++version) {
    history.versions.push_back({*version, id == nullptr ? "" : UidOfVersion(uid, *id)});
    if (id != nullptr && *id != nullptr) ++id;
  }
  history.complete = true;
}

// Looks for the document in a listing of its folder, and ends that where it stands.
[[nodiscard]] History FromFolder(const std::string& path, const std::string& uid) {
  History history;
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos || !VtDirectManager::CanPathShowVersions(path.c_str())) return history;
  const std::string name = path.substr(slash + 1);
  const auto receive = [&](const VtDirectManager::DirEntryExt& entry) {
    if (entry.isFolder || entry.versions == nullptr || name != entry.name) return true;
    Keep(entry, uid, history);
    return false;
  };
  static_cast<void>(ListPath(path.substr(0, slash + 1),
                             VtDirectManager::ReadDirFiles | VtDirectManager::ReadDirVersions, receive));
  return history;
}

// What every server tells: this version and the newest.
[[nodiscard]] History FromObject(const std::string& uid, const Version& latest) {
  History history;
  std::string current;
  std::string newest;
  const int status = VtDirectManager::GetStatus(uid.c_str(), current, newest, nullptr);
  if (status == 1) history.versions.push_back({current, uid});
  history.versions.push_back(latest);
  return history;
}

void Show(Host& host, const std::string& address, const History& history, const std::string& latest) {
  for (const Version& version : history.versions) {
    const bool newest = version.version == latest;
    Record shown{{"version", version.version}, {"uid", version.uid}};
    if (newest) shown.emplace_back("latest", std::string("latest"));
    host.output().Row(shown, {{"address", address},
                              {"version", version.version},
                              {"uid", version.uid},
                              {"latest", newest},
                              {"complete", history.complete}});
  }
  if (!history.complete) {
    host.output().Note("this server lists no versions here: shown are that of the object and the newest");
  }
}

ExitCode RunVersions(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  AddressKind kind{};
  if (const auto failure = RequireAddress(address, kind)) return host.output().Fail(*failure);

  ForgetTracedErrors();
  Version latest;
  const std::string uid = VtDirectManager::GetUID(address.c_str());
  if (uid.empty() || !VtDirectManager::GetLatest(address.c_str(), latest.version, latest.uid)) {
    return host.output().Fail(Diagnose(host, address, true));
  }
  const std::string path = VtDirectManager::GetVFSPathLatest(PlacedAddress(address, kind).c_str());
  History history = FromFolder(path, uid);
  if (!history.complete) history = FromObject(uid, latest);
  Show(host, address, history, latest.version);
  return ExitCode::Ok;
}

}  // namespace

CommandRow VersionsCommand() {
  return {
      "versions",
      "List the versions of a document",
      "Prints version and UID of each version of the document at ADDRESS, parted by a tab, and \"latest\" "
      "behind the newest.\n\nA server that lists versions, from schema 5 on, tells them in the listing of "
      "the document's folder, which is read up to the document; the order is that listing's. Of any other "
      "server, and of a document in a workspace, the object's own version and the newest are all that "
      "can be had; a note says so, and with --json \"complete\" is false.",
      {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
      {},
      true,
      RunVersions,
      {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
       {"version", MemberType::Text, nullptr, "the version"},
       {"uid", MemberType::Text, nullptr, "UID of this version"},
       {"latest", MemberType::Flag, nullptr, "whether it is the newest"},
       {"complete", MemberType::Flag, nullptr, "whether the lines show every version there is"}}};
}

}  // namespace vtdirect_cli
