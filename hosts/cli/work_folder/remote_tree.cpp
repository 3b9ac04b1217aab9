#include "hosts/cli/work_folder/remote_tree.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <mutex>

#include "hosts/cli/listing.h"
#include "hosts/cli/retrying.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/work_folder/local_names.h"
#include "hosts/cli/work_folder/parallel.h"
#include "hosts/cli/work_folder/why_failed.h"

namespace vtdirect_cli {
namespace {

// A folder that contains itself has no end, and shows no identity by which that could be seen.
constexpr int mostLevels = 64;
constexpr std::size_t mostFolders = 100'000;

// The characters that a path can't hold stand escaped in it, and plain in a UID, where a URL's rules hold.
[[nodiscard]] std::string EscapedForUid(const std::string& nameInPath) {
  constexpr std::string_view plain = "-._~";
  constexpr char digits[] = "0123456789ABCDEF";
  std::string escaped;
  for (std::size_t at = 0; at < nameInPath.size(); ++at) {
    const auto byte = static_cast<unsigned char>(nameInPath[at]);
    // What is escaped already means the same in a URL.
    const bool isEscape = byte == '%' && nameInPath.size() - at > 2 && isxdigit(nameInPath[at + 1]) != 0 &&
                          isxdigit(nameInPath[at + 2]) != 0;
    const bool isPlain = byte < 0x80 && (isalnum(byte) != 0 || plain.find(nameInPath[at]) != plain.npos);
    if (isEscape || isPlain) {
      escaped += nameInPath[at];
    } else {
      escaped += {'%', digits[byte >> 4U], digits[byte & 15U]};
    }
  }
  return escaped;
}

[[nodiscard]] std::vector<std::string> TextsOf(const char** texts) {
  std::vector<std::string> out;
  for (; texts != nullptr && *texts != nullptr; ++texts) out.emplace_back(*texts);
  return out;
}

/// One listing of a folder.
struct Listed {
  std::vector<ListedDocument> documents;
  std::vector<std::string> folders;
  std::optional<Failure> failure;
};

[[nodiscard]] Listed ListFolderOnce(const RemoteFolder& folder) {
  Listed listed;
  const VtDirectManager::Outcome outcome;
  const auto flags = VtDirectManager::ReadDirFiles | VtDirectManager::ReadDirFolders |
                     VtDirectManager::ReadDirDetails | VtDirectManager::ReadDirVersions;
  const ListingEnd end =
      ListPath(folder.address, flags, [&listed](const VtDirectManager::DirEntryExt& entry) {
        if (entry.isFolder) {
          listed.folders.push_back(TextOrEmpty(entry.name));
        } else {
          const std::string number = entry.details == nullptr ? "" : TextOrEmpty(entry.details->number);
          listed.documents.push_back(
              {TextOrEmpty(entry.name), number, TextsOf(entry.versions), TextsOf(entry.versionIds)});
        }
        return true;
      });
  if (end != ListingEnd::Whole) listed.failure = WhyFailed(outcome, "cannot list " + folder.address);
  return listed;
}

[[nodiscard]] Listed ListFolder(const RemoteFolder& folder, unsigned retries) {
  for (unsigned repetition = 0;; ++repetition) {
    Listed listed = ListFolderOnce(folder);
    if (!listed.failure || !IsToBeRepeated(*listed.failure, repetition, retries)) return listed;
  }
}

class Walk {
 public:
  Walk(std::string server, Effort effort) : server_(std::move(server)), effort_(effort) {}

  // Lists some folders at a time, and gives the folders in them.
  [[nodiscard]] std::vector<RemoteFolder> List(const std::vector<RemoteFolder>& wanted) {
    std::vector<RemoteFolder> below;
    RunInParallel(wanted.size(), effort_.threads, [&](std::size_t number) {
      Listed listed = ListFolder(wanted[number], effort_.retries);
      const std::lock_guard lock(mutex_);
      Take(wanted[number], std::move(listed), below);
    });
    return below;
  }

  // Asks for the newest version of each document that came without one.
  void AskForVersions() {
    std::vector<RemoteDocument> waiting;
    for (const auto& [path, document] : tree_.documents) {
      if (document.uid.empty()) waiting.push_back(document);
    }
    RunInParallel(waiting.size(), effort_.threads, [&](std::size_t number) { AskFor(waiting[number]); });
  }

  // What a signal has kept from being listed is not known.
  void LeaveOut(const RemoteFolder& folder, const std::string& why) {
    tree_.unknown.insert(folder.path);
    tree_.failures.push_back({ExitCode::Incomplete, "cannot list " + folder.address + ": " + why});
  }

  [[nodiscard]] RemoteTree TakeTree() { return std::move(tree_); }

 private:
  void Take(const RemoteFolder& from, Listed listed, std::vector<RemoteFolder>& below) {
    if (listed.failure) {
      tree_.unknown.insert(from.path);
      tree_.failures.push_back(*listed.failure);
      return;
    }
    if (!from.path.empty()) tree_.folders.push_back(from.path.substr(0, from.path.size() - 1));
    const NamedEntries entries = NameEntries(std::move(listed.documents), listed.folders);
    for (const auto& [name, document] : entries.documents) Add(from, name, document);
    for (const auto& [name, onServer] : entries.folders) {
      below.push_back({from.path + name + "/", from.address + onServer + "/"});
    }
    for (const std::string& name : entries.nameless) {
      tree_.failures.push_back({ExitCode::Incomplete, "an entry of " + from.address +
                                                          " can't have its name, \"" + name +
                                                          "\", on a disk; it is left out"});
    }
  }

  void Add(const RemoteFolder& from, const std::string& name, const ListedDocument& document) {
    RemoteDocument remote{from.path + name, from.address + document.name, {}, {}};
    for (std::size_t at = 0; at < document.ids.size() && at < document.versions.size(); ++at) {
      remote.versions.push_back({document.versions[at], UidOf(document.ids[at], document.name)});
    }
    if (!remote.versions.empty()) {
      remote.uid = remote.versions.front().uid;
      remote.version = remote.versions.front().version;
    }
    tree_.documents[remote.path] = remote;
  }

  [[nodiscard]] std::string UidOf(const std::string& id, const std::string& name) const {
    return server_ + "?id=" + id + "&file=/" + EscapedForUid(name);
  }

  void AskFor(RemoteDocument document) {
    const VtDirectManager::Outcome outcome;
    std::optional<Failure> failure;
    if (!VtDirectManager::GetLatest(document.address.c_str(), document.version, document.uid)) {
      failure = WhyFailed(outcome, "cannot ask for " + document.address);
    } else {
      failure = RefusalOfAnotherPlace(document.address, document.uid);
    }
    const std::lock_guard lock(mutex_);
    if (!failure) {
      tree_.documents[document.path] = document;
      return;
    }
    tree_.documents.erase(document.path);
    tree_.unknown.insert(document.path);
    tree_.failures.push_back(*failure);
  }

  std::string server_;
  Effort effort_;
  std::mutex mutex_;
  RemoteTree tree_;
};

}  // namespace

bool RemoteTree::Knows(const std::string& path) const {
  if (unknown.contains(path) || unknown.contains("")) return false;
  for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    if (unknown.contains(path.substr(0, slash + 1))) return false;
  }
  return true;
}

RemoteTree ReadRemoteTree(const std::string& server, const RemoteFolder& start, Effort effort) {
  Walk walk(server, effort);
  std::vector<RemoteFolder> level{start};
  std::size_t listed = 0;
  for (int depth = 0; depth < mostLevels && !level.empty(); ++depth) {
    listed += level.size();
    if (listed > mostFolders) break;
    level = walk.List(level);
  }
  for (const RemoteFolder& left : level)
    walk.LeaveOut(left, "there are too many folders, or too many levels");
  walk.AskForVersions();
  return walk.TakeTree();
}

RemoteLevel ReadRemoteLevel(const std::string& server, const std::vector<RemoteFolder>& wanted,
                            Effort effort) {
  Walk walk(server, effort);
  RemoteLevel level;
  level.below = walk.List(wanted);
  level.tree = walk.TakeTree();
  return level;
}

RemoteTree ReadRemoteFolders(const std::string& server, const std::vector<RemoteFolder>& wanted,
                             Effort effort) {
  Walk walk(server, effort);
  static_cast<void>(walk.List(wanted));
  walk.AskForVersions();
  return walk.TakeTree();
}

RemoteFolder FolderOfDocument(const std::string& path, const std::string& address) {
  const std::size_t slash = path.rfind('/');
  return {slash == std::string::npos ? "" : path.substr(0, slash + 1),
          address.substr(0, address.rfind('/') + 1)};
}

}  // namespace vtdirect_cli
