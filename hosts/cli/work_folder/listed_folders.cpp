#include "hosts/cli/work_folder/listed_folders.h"

#include <vtdirect/outcome.h>

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

#include "hosts/cli/browsing/listing.h"
#include "hosts/cli/failures/retrying.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/work_folder/why_failed.h"

namespace vtdirect_cli {
namespace {

// A folder that contains itself has no end, and shows no identity by which that could be seen.
constexpr unsigned mostLevels = 64;
constexpr std::size_t mostFolders = 100'000;

// What is told while a folder is listed.
struct Watch {
  std::function<void()> opened;                      // the server has been asked, and the folder is there
  std::function<void(ListedFolder& folder)> folder;  // of a folder in it, as soon as that is known
};

[[nodiscard]] std::vector<std::string> TextsOf(const char** texts) {
  std::vector<std::string> out;
  for (; texts != nullptr && *texts != nullptr; ++texts) out.emplace_back(*texts);
  return out;
}

[[nodiscard]] ListedDocument DocumentOf(const VtDirectManager::DirEntryExt& entry) {
  const std::string number = entry.details == nullptr ? "" : TextOrEmpty(entry.details->number);
  return {TextOrEmpty(entry.name), number, TextsOf(entry.versions), TextsOf(entry.versionIds)};
}

ListedFolder& AddFolder(ListedFolder& folder, const std::string& name,
                        const VtDirectManager::WalkedDir& directory) {
  auto below = std::make_unique<ListedFolder>();
  below->address = folder.address + name + "/";
  below->name = name;
  below->directory = directory;
  folder.folders.push_back(std::move(below));
  return *folder.folders.back();
}

// A listing that broke off has told of some folders already, which are perhaps being listed.
void ListOnce(ListedFolder& folder, const Watch& watch) {
  folder.documents.clear();
  const VtDirectManager::Outcome outcome;
  const auto flags = VtDirectManager::ReadDirFiles | VtDirectManager::ReadDirFolders |
                     VtDirectManager::ReadDirDetails | VtDirectManager::ReadDirVersions;
  std::set<std::string> known;
  for (const auto& below : folder.folders) known.insert(below->name);
  VtDirectManager::WalkedDir opened = std::exchange(folder.directory, nullptr);
  if (opened == nullptr) opened = VtDirectManager::OpenWalk(folder.address.c_str());
  if (opened != nullptr) watch.opened();
  const ListingEnd end =
      ListWalked(opened, flags,
                 [&](const VtDirectManager::DirEntryExt& entry, const VtDirectManager::WalkedDir& directory) {
                   if (!entry.isFolder) {
                     folder.documents.push_back(DocumentOf(entry));
                   } else if (!known.contains(TextOrEmpty(entry.name))) {
                     watch.folder(AddFolder(folder, TextOrEmpty(entry.name), directory));
                   }
                   return true;
                 });
  folder.failure.reset();
  if (end != ListingEnd::Whole) folder.failure = WhyFailed(outcome, "cannot list " + folder.address);
}

void ListRepeatedly(ListedFolder& folder, unsigned retries, const Watch& watch) {
  for (unsigned repetition = 0;; ++repetition) {
    ListOnce(folder, watch);
    if (!folder.failure || !IsToBeRepeated(*folder.failure, repetition, retries)) return;
  }
}

[[nodiscard]] Failure NotListed(const ListedFolder& folder, ExitCode code, const char* why) {
  return {code, "cannot list " + folder.address + ": " + why};
}

// The folders of a tree, each of which is listed by whichever thread is free first.
class TreeListing {
 public:
  TreeListing(ListedFolder& start, Effort effort, const SideTasks& beside)
      : effort_(effort), beside_(beside) {
    Await(start, 1);
  }

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
  // A folder, or one of what is done beside.
  struct Waiting {
    ListedFolder* folder = nullptr;
    unsigned level = 0;
    std::size_t number = 0;
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

  void BeginBeside() {
    const std::lock_guard lock(mutex_);
    isOpen_ = true;
    changed_.notify_all();
  }

  [[nodiscard]] bool HasBeside() const { return isOpen_ && begunBeside_ < beside_.count; }

  // Nothing when all is listed, or nothing more is to be begun.
  [[nodiscard]] std::optional<Waiting> Next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !waiting_.empty() || HasBeside() || underWay_ == 0 || thrown_; });
    if (thrown_ || Interrupted()) return std::nullopt;
    Waiting next;
    if (!waiting_.empty()) {
      next = waiting_.front();
      waiting_.pop_front();
    } else if (HasBeside()) {
      next.number = begunBeside_++;
    } else {
      return std::nullopt;
    }
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
        Do(*next);
      } catch (...) {
        thrown = std::current_exception();
      }
      End(thrown);
    }
  }

  void Do(const Waiting& next) {
    if (next.folder == nullptr) return beside_.run(next.number);
    ListRepeatedly(
        *next.folder, effort_.retries,
        {[this] { BeginBeside(); }, [this, &next](ListedFolder& folder) { Await(folder, next.level + 1); }});
  }

  const Effort effort_;
  const SideTasks& beside_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Waiting> waiting_;
  std::size_t told_ = 0;
  std::size_t underWay_ = 0;
  bool isOpen_ = false;
  std::size_t begunBeside_ = 0;
  std::exception_ptr thrown_;
};

}  // namespace

void ListTree(ListedFolder& start, Effort effort, const SideTasks& beside) {
  TreeListing(start, effort, beside).Run();
}

void ListFolder(ListedFolder& folder, unsigned retries) {
  ListRepeatedly(folder, retries, {[] {}, [](ListedFolder&) {}});
}

}  // namespace vtdirect_cli
