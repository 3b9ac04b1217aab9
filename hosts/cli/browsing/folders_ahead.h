#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "hosts/cli/browsing/listing.h"

namespace vtdirect_cli {

/// Whether this thread lists a folder ahead of a walk. Nobody is asked for a password from such a thread: the
/// listing fails, and the walk repeats it.
[[nodiscard]] bool IsAheadOfWalk();

/// Lists folders before a walk comes to them, so that it waits for several answers at one time. What a listing
/// delivers stays as it is without this: a folder that could not be listed whole, or has too many entries to
/// be kept, is listed again when the walk comes to it.
class FoldersAhead {
 public:
  using List = std::function<ListingEnd(const std::string& path, const EntryFunction& receive)>;

  /// Entries that are kept of one folder, and of all together.
  struct Bounds {
    std::size_t ofOne = 50'000;
    std::size_t ofAll = 200'000;
  };

  /// @param list     called on several threads at one time
  /// @param threads  how many are started; with none, each folder is listed when it is asked for
  FoldersAhead(List list, unsigned threads) : FoldersAhead(std::move(list), threads, Bounds()) {}
  FoldersAhead(List list, unsigned threads, const Bounds& bounds);
  /// Begins no more listings, and waits for those that were begun.
  ~FoldersAhead();
  FoldersAhead(const FoldersAhead&) = delete;
  FoldersAhead& operator=(const FoldersAhead&) = delete;

  /// Tells which folders the walk comes to next, the nearest first. They take the place of those told before.
  void Expect(std::vector<std::string> paths);

  /// Lists a folder for the walk, on its thread: from what was kept, or by a listing of its own.
  [[nodiscard]] ListingEnd Enter(const std::string& path, const EntryFunction& receive);

 private:
  struct Entry {
    std::string name;
    bool isFolder;
  };
  using Entries = std::unique_ptr<const std::vector<Entry>>;
  struct Folder {
    bool isOver = false;
    Entries entries;  ///< null when it must be listed again
  };

  void Run();
  [[nodiscard]] std::optional<std::string> NextPath();
  [[nodiscard]] Entries Read(const std::string& path) const;
  void Keep(const std::string& path, Entries entries);
  [[nodiscard]] Entries Take(const std::string& path);

  const List list_;
  const Bounds bounds_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> expected_;
  std::map<std::string, Folder> begun_;
  std::size_t kept_ = 0;  ///< entries of all folders together
  bool ended_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace vtdirect_cli
