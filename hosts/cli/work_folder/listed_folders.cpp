#include "hosts/cli/work_folder/listed_folders.h"

#include <vtdirect/outcome.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

#include "hosts/cli/interruption.h"
#include "hosts/cli/listing.h"
#include "hosts/cli/retrying.h"
#include "hosts/cli/work_folder/why_failed.h"

namespace vtdirect_cli {
namespace {

// A folder that contains itself has no end, and shows no identity by which that could be seen.
constexpr unsigned mostLevels = 64;
constexpr std::size_t mostFolders = 100'000;

// Told of each folder as soon as the listing above it has delivered it.
using FolderFunction = std::function<void(ListedFolder& folder)>;

[[nodiscard]] std::vector<std::string> TextsOf(const char** texts) {
  std::vector<std::string> out;
  for (; texts != nullptr && *texts != nullptr; ++texts) out.emplace_back(*texts);
  return out;
}

[[nodiscard]] ListedDocument DocumentOf(const VtDirectManager::DirEntryExt& entry) {
  const std::string number = entry.details == nullptr ? "" : TextOrEmpty(entry.details->number);
  return {TextOrEmpty(entry.name), number, TextsOf(entry.versions), TextsOf(entry.versionIds)};
}

// A listing that broke off has told of some folders already, which are perhaps being listed.
[[nodiscard]] bool IsKnown(const std::vector<std::unique_ptr<ListedFolder>>& folders,
                           const std::string& name) {
  return std::any_of(folders.begin(), folders.end(),
                     [&name](const auto& folder) { return folder->name == name; });
}

void ListOnce(ListedFolder& folder, bool isRepeated, const FolderFunction& tell) {
  folder.documents.clear();
  const VtDirectManager::Outcome outcome;
  const auto flags = VtDirectManager::ReadDirFiles | VtDirectManager::ReadDirFolders |
                     VtDirectManager::ReadDirDetails | VtDirectManager::ReadDirVersions;
  const ListingEnd end =
      ListWalked(std::exchange(folder.directory, nullptr), folder.address, flags,
                 [&](const VtDirectManager::DirEntryExt& entry, const VtDirectManager::WalkedDir& directory) {
                   if (!entry.isFolder) {
                     folder.documents.push_back(DocumentOf(entry));
                     return true;
                   }
                   const std::string name = TextOrEmpty(entry.name);
                   if (isRepeated && IsKnown(folder.folders, name)) return true;
                   auto below = std::make_unique<ListedFolder>();
                   below->address = folder.address + name + "/";
                   below->name = name;
                   below->directory = directory;
                   folder.folders.push_back(std::move(below));
                   tell(*folder.folders.back());
                   return true;
                 });
  folder.failure.reset();
  if (end != ListingEnd::Whole) folder.failure = WhyFailed(outcome, "cannot list " + folder.address);
}

void ListRepeatedly(ListedFolder& folder, unsigned retries, const FolderFunction& tell) {
  for (unsigned repetition = 0;; ++repetition) {
    ListOnce(folder, repetition > 0, tell);
    if (!folder.failure || !IsToBeRepeated(*folder.failure, repetition, retries)) return;
  }
}

[[nodiscard]] Failure NotListed(const ListedFolder& folder, ExitCode code, const char* why) {
  return {code, "cannot list " + folder.address + ": " + why};
}

// The folders of a tree, each of which is listed by whichever thread is free first.
class TreeListing {
 public:
  TreeListing(ListedFolder& start, Effort effort) : effort_(effort) { Await(start, 1); }

  void Run() {
    {
      std::vector<std::jthread> workers;
      for (unsigned number = 1; number < effort_.threads; ++number) workers.emplace_back([this] { Work(); });
      Work();
    }
    for (const Waiting& left : waiting_) {
      left.folder->failure.emplace(NotListed(*left.folder, ExitCode::Interrupted, "interrupted"));
    }
    if (thrown_) std::rethrow_exception(thrown_);
  }

 private:
  struct Waiting {
    ListedFolder* folder;
    unsigned level;
  };

  void Await(ListedFolder& folder, unsigned level) {
    const std::lock_guard lock(mutex_);
    if (level > mostLevels || ++told_ > mostFolders) {
      folder.failure.emplace(
          NotListed(folder, ExitCode::Incomplete, "there are too many folders, or too many levels"));
      return;
    }
    waiting_.push_back({&folder, level});
    changed_.notify_one();
  }

  // Nothing when all is listed, or nothing more is to be begun.
  [[nodiscard]] std::optional<Waiting> Next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !waiting_.empty() || underWay_ == 0 || thrown_; });
    if (waiting_.empty() || thrown_ || Interrupted()) return std::nullopt;
    const Waiting next = waiting_.front();
    waiting_.pop_front();
    ++underWay_;
    return next;
  }

  void End(std::exception_ptr thrown) {
    const std::lock_guard lock(mutex_);
    --underWay_;
    if (thrown) thrown_ = std::move(thrown);
    changed_.notify_all();
  }

  void Work() {
    while (const auto next = Next()) {
      std::exception_ptr thrown;
      try {
        ListRepeatedly(*next->folder, effort_.retries,
                       [this, &next](ListedFolder& folder) { Await(folder, next->level + 1); });
      } catch (...) {
        thrown = std::current_exception();
      }
      End(thrown);
    }
  }

  const Effort effort_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Waiting> waiting_;
  std::size_t told_ = 0;
  std::size_t underWay_ = 0;
  std::exception_ptr thrown_;
};

}  // namespace

void ListTree(ListedFolder& start, Effort effort) {
  TreeListing(start, effort).Run();
}

void ListFolder(ListedFolder& folder, unsigned retries) {
  ListRepeatedly(folder, retries, [](ListedFolder&) {});
}

}  // namespace vtdirect_cli
