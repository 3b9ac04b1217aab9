#include "hosts/cli/browsing/walked_folders.h"

namespace vtdirect_cli {
namespace {

// Some hundred bytes each. A folder beyond them is looked up by its path.
constexpr std::size_t mostWaiting = 100'000;

}  // namespace

ListingEnd WalkedFolders::List(const std::string& path, const EntryFunction& receive) {
  VtDirectManager::WalkedDir directory = Take(path);
  if (directory == nullptr) directory = VtDirectManager::OpenWalk(path.c_str());
  return ListWalked(directory, flags_,
                    [&](const VtDirectManager::DirEntryExt& entry, const VtDirectManager::WalkedDir& folder) {
                      if (folder != nullptr) Keep(path + TextOrEmpty(entry.name) + "/", folder);
                      return receive(entry);
                    });
}

VtDirectManager::WalkedDir WalkedFolders::Take(const std::string& path) {
  const std::lock_guard lock(mutex_);
  const auto folder = waiting_.find(path);
  if (folder == waiting_.end()) return nullptr;
  VtDirectManager::WalkedDir directory = std::move(folder->second);
  waiting_.erase(folder);
  return directory;
}

// Of two folders of one name the path leads to the first.
void WalkedFolders::Keep(const std::string& path, const VtDirectManager::WalkedDir& directory) {
  const std::lock_guard lock(mutex_);
  if (waiting_.size() < mostWaiting) waiting_.emplace(path, directory);
}

}  // namespace vtdirect_cli
