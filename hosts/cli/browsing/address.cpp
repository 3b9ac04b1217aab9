#include "hosts/cli/browsing/address.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <vector>

#include "hosts/cli/browsing/mounted_path.h"
#include "hosts/cli/servers/configuration_file.h"
#include "hosts/cli/texts/near_word.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] bool IsBarePath(const std::string& address) {
  return address.starts_with("//") && address.find("://") == std::string::npos;
}

[[nodiscard]] std::string NicknameOf(const std::string& path) {
  const std::size_t start = path.find("//") + 2;
  return path.substr(start, std::min(path.find('/', start), path.size()) - start);
}

[[nodiscard]] std::string ServerOf(const std::string& uid) {
  const std::size_t start = uid.find("://");
  if (start == std::string::npos) return {};
  return uid.substr(start + 3, std::min(uid.find('?'), uid.size()) - start - 3);
}

[[nodiscard]] Failure Unusable(const std::string& address, const std::string& why) {
  return {ExitCode::Usage, "\"" + address + "\" " + why};
}

[[nodiscard]] std::vector<std::string> ListedNicknames() {
  std::vector<std::string> nicknames;
  const auto add = [](const char* nickname, void* user) {
    static_cast<std::vector<std::string>*>(user)->emplace_back(nickname);
  };
  VtDirectManager::ReadRootDirs(add, &nicknames);
  return nicknames;
}

// Who begins with a nickname alone has left the slashes out.
[[nodiscard]] std::string PathOfNickname(const std::string& address) {
  const std::vector<std::string> listed = ListedNicknames();
  const std::string first = address.substr(0, address.find('/'));
  if (std::find(listed.begin(), listed.end(), first) == listed.end()) return {};
  return "did you mean //" + (first == address ? WithClosingSlash(address) : address) + "?";
}

}  // namespace

Result<AddressKind> ClassifyAddress(const std::string& address) {
  const std::string scheme = VtDirectManager::GetVFSLocationPrefix();
  if (VtDirectManager::IsUID(address.c_str())) return AddressKind::Uid;
  if (address.starts_with(scheme + "://") || IsBarePath(address)) {
    if (!NicknameOf(address).empty()) return AddressKind::Path;
    return Unusable(address, "names no server: a path is " + scheme + "://NICK/... or //NICK/...");
  }
  if (VtDirectManager::IsManaged(address.c_str()) && !VtDirectManager::IsVFSPath(address.c_str())) {
    return Unusable(address, "is a UID without an id: a UID ends in ?id=ID");
  }
  if (address.starts_with("http://") || address.starts_with("https://")) {
    return Unusable(address, "is a URL: list its server with --server NICK=URL and give //NICK/... or a UID");
  }
  if (LiesInEndedMount(address)) {
    return Unusable(address,
                    "lies in a mount that has ended: mount the server there again, or give //NICK/...");
  }
  Failure neither =
      Unusable(address, "is neither a path (" + scheme + "://NICK/... or //NICK/...) nor a UID");
  neither.advice = PathOfNickname(address);
  return neither;
}

std::string ServerHint(const std::string& address, AddressKind kind) {
  if (kind == AddressKind::Path) return NicknameOf(address) + "=URL";
  return "NICK=https://" + ServerOf(address);
}

std::optional<Failure> RequireListedServer(const std::string& address, AddressKind kind) {
  if (!VtDirectManager::GetServerURL(address.c_str()).empty()) return std::nullopt;
  const std::string name = kind == AddressKind::Path
                               ? "no server \"" + NicknameOf(address) + "\""
                               : "the server of this UID, " + ServerOf(address) + ", is not listed";
  const std::string meant =
      kind == AddressKind::Path ? DidYouMean(NicknameOf(address), ListedNicknames()) : std::string();
  return Failure{
      ExitCode::ServerNotListed, name + (kind == AddressKind::Path ? " is listed" : ""),
      meant + (meant.empty() ? "" : " else ") + "list it " + HowToListServer(ServerHint(address, kind))};
}

bool IsById(const std::string& address, AddressKind kind) {
  if (kind == AddressKind::Uid) return true;
  const std::size_t root = address.find('/', address.find("//") + 2);
  return root != std::string::npos && address.compare(root + 1, 4, "?id=") == 0;
}

std::string PlacedAddress(const std::string& address, AddressKind kind) {
  if (kind == AddressKind::Uid || !IsById(address, kind)) return address;
  return VtDirectManager::GetUID(address.c_str());
}

std::string WithClosingSlash(const std::string& path) {
  return path.ends_with('/') ? path : path + '/';
}

Result<AddressKind> RequireAddress(const std::string& address) {
  const auto kind = ClassifyAddress(address);
  if (!kind) return kind;
  if (auto failure = RequireListedServer(address, *kind)) return *failure;
  return kind;
}

std::string FileNameOf(const std::string& address) {
  // The library takes a bare path for a text without a name and would ask the server; the full form of the
  // same path is answered from its text.
  const std::string full =
      IsBarePath(address) ? VtDirectManager::GetVFSLocationPrefix() + (":" + address) : address;
  const std::string name = VtDirectManager::GetFileName(full.c_str());
  // A path by id ("//plm/?id=D1001") holds an id where others hold a name. An escaped name has no "?" in it.
  if (name.find('?') == std::string::npos) return name;
  const std::string uid = VtDirectManager::GetUID(address.c_str());
  return uid.empty() ? "" : VtDirectManager::GetFileName(uid.c_str());
}

}  // namespace vtdirect_cli
