#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>

#include "hosts/cli/browsing/listing.h"

namespace vtdirect_cli {

/// Lists the folders of one walk by their paths, and each by what the listing above it told of it, so that no
/// folder is looked for. Its functions may be called by several threads.
class WalkedFolders {
 public:
  /// @param flags  bits of ReadDirFlags, for all of its listings
  explicit WalkedFolders(std::uint32_t flags) : flags_(flags) {}

  /// Lists a folder, each entry as it arrives. A second listing of the same folder looks it up by its path.
  /// @param path  with its closing "/"
  [[nodiscard]] ListingEnd List(const std::string& path, const EntryFunction& receive);

 private:
  [[nodiscard]] VtDirectManager::WalkedDir Take(const std::string& path);
  void Keep(const std::string& path, const VtDirectManager::WalkedDir& directory);

  const std::uint32_t flags_;
  std::mutex mutex_;
  std::unordered_map<std::string, VtDirectManager::WalkedDir> waiting_;  ///< by their paths
};

}  // namespace vtdirect_cli
