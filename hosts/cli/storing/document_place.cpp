#include "hosts/cli/storing/document_place.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "hosts/cli/address.h"
#include "hosts/cli/files/escaped_name.h"

namespace vtdirect_cli {
namespace {

// The names of a path behind the server's, each written in one way. Several names may stand for one server.
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

}  // namespace

std::optional<Failure> RefusalOfAnotherPlace(const std::string& address, const std::string& uid) {
  AddressKind kind{};
  if (uid.empty() || ClassifyAddress(address, kind) || IsById(address, kind)) return std::nullopt;
  const std::string folder = VtDirectManager::GetVFSFolderPath(uid.c_str());
  if (folder.empty() || NamesOf(folder) == NamesOf(address.substr(0, address.rfind('/'))))
    return std::nullopt;
  return Failure{ExitCode::NotFound, "not found: " + address + "; the document of that name, " + uid +
                                         ", stands in " + WithClosingSlash(folder) +
                                         "; nothing was changed; give its own address if it is meant"};
}

OptionRow AnywhereOption() {
  return {"anywhere",
          0,
          nullptr,
          false,
          Completion::Nothing,
          "Take the document of that name in whichever folder it is, as the server's search finds it."};
}

std::optional<Failure> RequirePlacedAddress(const Arguments& arguments, const std::string& address,
                                            AddressKind& kind) {
  if (auto failure = RequireAddress(address, kind)) return failure;
  if (arguments.Has("anywhere") || IsById(address, kind) || address.ends_with('/')) return std::nullopt;
  auto failure = RefusalOfAnotherPlace(address, VtDirectManager::GetUID(address.c_str()));
  if (failure) failure->message += ", or --anywhere";
  return failure;
}

std::string UidAtPlace(const std::string& path) {
  std::string uid = VtDirectManager::GetUID(path.c_str());
  if (uid.empty() || RefusalOfAnotherPlace(path, uid)) return {};
  return uid;
}

}  // namespace vtdirect_cli
