#include "hosts/mount/tree/folder_listing.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <cerrno>

#include "hosts/mount/names/shown_name.h"
#include "hosts/mount/requests/failure_errno.h"

namespace vtdirect_mount {
namespace {

void AddEntry(VtDirectManager::DirEntryExt& entry, void* user) {
  if (entry.name == nullptr || *entry.name == '\0') return;
  static_cast<FolderListing*>(user)->Add(entry.name, entry.isFolder);
}

void AddVersions(VtDirectManager::DirEntryExt& entry, void* user) {
  if (entry.isFolder || entry.name == nullptr || entry.versions == nullptr || entry.versionIds == nullptr) {
    return;
  }
  auto& versions = (*static_cast<FolderVersions*>(user))[entry.name];
  if (!versions.empty()) return;
  for (std::size_t index = 0; entry.versions[index] != nullptr; ++index) {
    if (entry.versionIds[index] == nullptr) return;
    versions.push_back({entry.versions[index], entry.versionIds[index]});
  }
}

}  // namespace

void FolderListing::Add(const std::string& name, bool isFolder) {
  FolderEntry entry{isFolder ? ShownFolderName(name) : ShownName(name), name, isFolder};
  const auto known = byShown_.find(entry.shown);
  if (known != byShown_.end()) {
    if (isFolder || !entries_[known->second].isFolder) return;
    entry.shown += '~';
  }
  if (!byShown_.emplace(entry.shown, entries_.size()).second) return;
  entries_.push_back(std::move(entry));
  if (!isFolder) ++documents_;
}

const FolderEntry* FolderListing::Find(const std::string& shown) const {
  const auto place = byShown_.find(shown);
  return place == byShown_.end() ? nullptr : &entries_[place->second];
}

bool FolderListing::HasDocument(const std::string& name) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&name](const FolderEntry& entry) { return !entry.isFolder && entry.name == name; });
}

Answer<FolderListing> ListFolder(const std::string& path) {
  using VtDirectManager::ReadDirFiles;
  using VtDirectManager::ReadDirFolders;
  const VtDirectManager::Outcome outcome;
  FolderListing listing;
  if (VtDirectManager::ReadDirExt(path.c_str(), AddEntry, &listing, ReadDirFiles | ReadDirFolders)) {
    return Found(std::move(listing));
  }
  return {ErrorOf(outcome), nullptr, WordsOf(outcome)};
}

Answer<FolderVersions> ListVersions(const std::string& path) {
  using VtDirectManager::ReadDirFiles;
  using VtDirectManager::ReadDirVersions;
  if (!VtDirectManager::CanPathShowVersions(path.c_str())) return {ENOTSUP};
  const VtDirectManager::Outcome outcome;
  FolderVersions versions;
  if (VtDirectManager::ReadDirExt(path.c_str(), AddVersions, &versions, ReadDirFiles | ReadDirVersions)) {
    return Found(std::move(versions));
  }
  return {ErrorOf(outcome), nullptr, WordsOf(outcome)};
}

}  // namespace vtdirect_mount
