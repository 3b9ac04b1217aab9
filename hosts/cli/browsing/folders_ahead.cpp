#include "hosts/cli/browsing/folders_ahead.h"

#include <algorithm>
#include <utility>

namespace vtdirect_cli {
namespace {

thread_local bool isAhead = false;

}  // namespace

bool IsAheadOfWalk() {
  return isAhead;
}

FoldersAhead::FoldersAhead(List list, unsigned threads, const Bounds& bounds)
    : list_(std::move(list)), bounds_(bounds) {
  for (unsigned i = 0; i < threads; ++i) threads_.emplace_back([this] { Run(); });
}

FoldersAhead::~FoldersAhead() {
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void FoldersAhead::Expect(std::vector<std::string> paths) {
  if (threads_.empty()) return;
  {
    const std::lock_guard lock(mutex_);
    expected_ = std::move(paths);
  }
  changed_.notify_all();
}

ListingEnd FoldersAhead::Enter(const std::string& path, const EntryFunction& receive) {
  const Entries entries = Take(path);
  if (entries == nullptr) return list_(path, receive);
  for (const Entry& entry : *entries) {
    if (!receive({entry.name.c_str(), entry.isFolder, nullptr, nullptr, nullptr})) return ListingEnd::Stopped;
  }
  return ListingEnd::Whole;
}

// Waits for a listing that was begun. One that was not is left to the walk.
FoldersAhead::Entries FoldersAhead::Take(const std::string& path) {
  std::unique_lock lock(mutex_);
  std::erase(expected_, path);
  const auto folder = begun_.find(path);
  if (folder == begun_.end()) return nullptr;
  changed_.wait(lock, [&folder] { return folder->second.isOver; });
  Entries entries = std::move(folder->second.entries);
  begun_.erase(folder);
  if (entries != nullptr) kept_ -= entries->size();
  changed_.notify_all();
  return entries;
}

void FoldersAhead::Run() {
  isAhead = true;
  while (const auto path = NextPath()) Keep(*path, Read(*path));
}

std::optional<std::string> FoldersAhead::NextPath() {
  std::unique_lock lock(mutex_);
  auto next = expected_.end();
  changed_.wait(lock, [this, &next] {
    next = std::find_if(expected_.begin(), expected_.end(),
                        [this](const std::string& path) { return !begun_.contains(path); });
    return ended_ || (next != expected_.end() && kept_ < bounds_.ofAll);
  });
  if (ended_) return std::nullopt;
  begun_[*next] = {};
  return *next;
}

// Nothing for a listing that failed in any way: the walk's own one tells how.
FoldersAhead::Entries FoldersAhead::Read(const std::string& path) const {
  std::vector<Entry> entries;
  try {
    const ListingEnd end = list_(path, [&](const VtDirectManager::DirEntryExt& entry) {
      if (entries.size() >= bounds_.ofOne) return false;
      entries.push_back({TextOrEmpty(entry.name), entry.isFolder});
      return true;
    });
    if (end == ListingEnd::Whole) return std::make_unique<const std::vector<Entry>>(std::move(entries));
  } catch (...) {
    // It would end the process here. On the walk's thread it is told of.
  }
  return nullptr;
}

void FoldersAhead::Keep(const std::string& path, Entries entries) {
  {
    const std::lock_guard lock(mutex_);
    Folder& folder = begun_[path];
    folder.isOver = true;
    folder.entries = std::move(entries);
    if (folder.entries != nullptr) kept_ += folder.entries->size();
  }
  changed_.notify_all();
}

}  // namespace vtdirect_cli
