#include "hosts/cli/browsing/tree_walk.h"

#include <algorithm>

namespace vtdirect_cli {
namespace {

enum class EntryKind { Document, Folder };

// A folder whose folders are being walked.
struct Level {
  std::string path;
  std::vector<std::string> folders;  // those that are left, the next one last
};

[[nodiscard]] bool IsEnterable(const std::string& name) {
  return !name.empty() && name.find('/') == std::string::npos;
}

class Walk {
 public:
  Walk(const TreeBounds& bounds, const TreeWork& work) : bounds_(bounds), work_(work) {}

  [[nodiscard]] TreeEnd From(const std::string& start) {
    end_.start = Enter(start);
    while (!levels_.empty() && !end_.stopped) Step();
    return end_;
  }

 private:
  // Lists a folder below the levels that are there, and makes a level of it.
  ListingEnd Enter(const std::string& path) {
    ++listed_;
    levels_.push_back({path, {}});
    const ListingEnd end =
        work_.list(path, [this](const VtDirectManager::DirEntryExt& entry) { return Receive(entry); });
    if (end == ListingEnd::Stopped) end_.stopped = true;
    // A server's order differs from generation to generation, and one name is one path.
    std::vector<std::string>& folders = levels_.back().folders;
    std::sort(folders.begin(), folders.end(), std::greater<>());
    folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
    return end;
  }

  [[nodiscard]] bool Receive(const VtDirectManager::DirEntryExt& entry) {
    const std::string name = TextOrEmpty(entry.name);
    if (!entry.isFolder) return Show(name, EntryKind::Document);
    if (waiting_ + name.size() + sizeof(std::string) > bounds_.waitingBytes) {
      end_.waitingBound = true;
      return true;
    }
    waiting_ += name.size() + sizeof(std::string);
    levels_.back().folders.push_back(name);
    return true;
  }

  [[nodiscard]] bool Show(const std::string& name, EntryKind kind) {
    const bool isFolder = kind == EntryKind::Folder;
    const std::string path = levels_.back().path + name + (isFolder ? "/" : "");
    return work_.show({path, name, isFolder, static_cast<std::uint32_t>(levels_.size())});
  }

  // Walks on by one folder.
  void Step() {
    Level& level = levels_.back();
    if (level.folders.empty()) {
      levels_.pop_back();
      return;
    }
    const std::string name = std::move(level.folders.back());
    level.folders.pop_back();
    // A name that came twice stays counted: the bound is reached a little early, and never late.
    waiting_ -= std::min<std::uint64_t>(waiting_, name.size() + sizeof(std::string));
    if (!Show(name, EntryKind::Folder)) {
      end_.stopped = true;
      return;
    }
    if (MayEnter(name)) Descend(level.path + name + "/");
  }

  [[nodiscard]] bool MayEnter(const std::string& name) {
    if (!IsEnterable(name)) {
      ++end_.notEnterable;
      return false;
    }
    if (levels_.size() >= bounds_.depth) {
      ++end_.beyondDepth;
      return false;
    }
    if (listed_ < bounds_.folders) return true;
    end_.folderBound = true;
    end_.stopped = true;
    return false;
  }

  // Those that are going to be entered, as far as they are known by now.
  void TellWhatComes() {
    if (!work_.expect) return;
    std::vector<std::string> paths;
    for (std::size_t depth = std::min<std::size_t>(levels_.size(), bounds_.depth - 1); depth > 0; --depth) {
      const Level& level = levels_[depth - 1];
      for (auto name = level.folders.rbegin(); name != level.folders.rend(); ++name) {
        if (paths.size() == work_.expected) break;
        if (IsEnterable(*name)) paths.push_back(level.path + *name + "/");
      }
    }
    work_.expect(std::move(paths));
  }

  void Descend(const std::string& path) {
    TellWhatComes();
    const ListingEnd end = Enter(path);
    if (end != ListingEnd::Broken && end != ListingEnd::Unreachable) return;
    end_.failures = true;
    if (!work_.failed(path, end)) end_.stopped = true;
  }

  const TreeBounds& bounds_;
  const TreeWork& work_;
  TreeEnd end_;
  std::vector<Level> levels_;
  std::uint64_t listed_ = 0;
  std::uint64_t waiting_ = 0;
};

}  // namespace

TreeEnd WalkTree(const std::string& start, const TreeBounds& bounds, const TreeWork& work) {
  return Walk(bounds, work).From(start);
}

}  // namespace vtdirect_cli
