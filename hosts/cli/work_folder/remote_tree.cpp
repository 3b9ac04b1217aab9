#include "hosts/cli/work_folder/remote_tree.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <mutex>
#include <string_view>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/work_folder/local_names.h"
#include "hosts/cli/work_folder/parallel.h"
#include "hosts/cli/work_folder/why_failed.h"

namespace vtdirect_cli {
namespace {

// The characters that a path can't hold are escaped in it, and plain in a UID, where a URL's rules hold.
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

// The names of the folders that a file lies in. The steps of its path and of its address belong together from the end.
void AddFolders(const std::string& path, std::string_view address,
                std::map<std::string, KeptFolders>& names) {
  std::string_view local = path;
  for (std::size_t slash = local.rfind('/'); slash != local.npos; slash = local.rfind('/')) {
    local.remove_suffix(local.size() - slash);
    address.remove_suffix(address.size() - std::min(address.rfind('/'), address.size()));
    const std::size_t begin = local.rfind('/') + 1;
    names[std::string(local.substr(0, begin))].emplace(address.substr(address.rfind('/') + 1),
                                                       local.substr(begin));
  }
}

[[nodiscard]] std::map<std::string, KeptFolders> FoldersOf(const KeptFiles& kept) {
  std::map<std::string, KeptFolders> names;
  for (const auto& [path, file] : kept) AddFolders(path, file.address, names);
  return names;
}

// The names of each folder, by its path.
[[nodiscard]] std::map<std::string, KeptNames> NamesOf(const KeptFiles& kept) {
  std::map<std::string, KeptNames> names;
  for (const auto& [path, file] : kept) {
    const std::size_t begin = path.rfind('/') + 1;
    names[path.substr(0, begin)].emplace(
        DocumentIdOf(file.uid),
        KeptName{path.substr(begin), file.address.substr(file.address.rfind('/') + 1)});
  }
  return names;
}

// Gives what was listed its names on the disk.
class Naming {
 public:
  Naming(std::string server, Effort effort, const KeptFiles& kept = {})
      : server_(std::move(server)), effort_(effort), kept_(NamesOf(kept)), keptFolders_(FoldersOf(kept)) {}

  // Takes what one folder holds, and gives the folders in it.
  struct Below {
    RemoteFolder folder;
    ListedFolder* listed = nullptr;
  };
  [[nodiscard]] std::vector<Below> Take(const std::string& path, ListedFolder& listed) {
    if (listed.failure) {
      tree_.unknown.insert(path);
      tree_.failures.push_back(*listed.failure);
      return {};
    }
    if (!path.empty()) tree_.folders.push_back(path.substr(0, path.size() - 1));
    std::vector<std::string> names;
    std::map<std::string, ListedFolder*> byName;
    for (const auto& folder : listed.folders) {
      // Of two folders of one name the path leads to the first.
      if (byName.emplace(folder->name, folder.get()).second) names.push_back(folder->name);
    }
    const NamedEntries entries =
        NameEntries(std::move(listed.documents), names, kept_[path], keptFolders_[path]);
    for (const auto& [name, document] : entries.documents) Add(path, listed.address, name, document);
    for (const std::string& name : entries.nameless) {
      tree_.failures.push_back({ExitCode::Incomplete, "an entry of " + listed.address +
                                                          " can't have its name, \"" + name +
                                                          "\", on a disk; it is left out"});
    }
    std::vector<Below> below;
    for (const auto& [name, onServer] : entries.folders) {
      ListedFolder* folder = byName[onServer];
      below.push_back({{path + name + "/", folder->address, folder->directory}, folder});
    }
    return below;
  }

  // The same for all below it.
  void TakeAll(const std::string& path, ListedFolder& listed) {
    std::vector<Below> waiting{{{path, listed.address}, &listed}};
    while (!waiting.empty()) {
      const Below next = std::move(waiting.back());
      waiting.pop_back();
      for (Below& below : Take(next.folder.path, *next.listed)) waiting.push_back(std::move(below));
    }
  }

  // Asks for the newest version of each document that came without one.
  void AskForVersions() {
    std::vector<RemoteDocument> waiting;
    for (const auto& [path, document] : tree_.documents) {
      if (document.uid.empty()) waiting.push_back(document);
    }
    RunInParallel(waiting.size(), effort_.threads, [&](std::size_t number) { AskFor(waiting[number]); });
  }

  [[nodiscard]] RemoteTree TakeTree() { return std::move(tree_); }

 private:
  void Add(const std::string& path, const std::string& address, const std::string& name,
           const ListedDocument& document) {
    RemoteDocument remote{path + name, address + document.name, {}, {}};
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
  std::map<std::string, KeptNames> kept_;
  std::map<std::string, KeptFolders> keptFolders_;  // by the path of the folder above
  std::mutex mutex_;
  RemoteTree tree_;
};

[[nodiscard]] ListedFolder ToList(const RemoteFolder& folder) {
  ListedFolder listed;
  listed.address = folder.address;
  listed.directory = folder.directory;
  return listed;
}

// Lists some folders, without what is below them. What a signal keeps from being listed is not known.
[[nodiscard]] std::vector<ListedFolder> ListAll(const std::vector<RemoteFolder>& wanted, Effort effort) {
  std::vector<ListedFolder> listed;
  for (const RemoteFolder& folder : wanted) {
    listed.push_back(ToList(folder));
    listed.back().failure = Failure{ExitCode::Interrupted, "cannot list " + folder.address + ": interrupted"};
  }
  RunInParallel(listed.size(), effort.threads,
                [&](std::size_t number) { ListFolder(listed[number], effort.retries); });
  return listed;
}

}  // namespace

bool RemoteTree::Knows(const std::string& path) const {
  if (unknown.contains(path) || unknown.contains("")) return false;
  for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    if (unknown.contains(path.substr(0, slash + 1))) return false;
  }
  return true;
}

RemoteTree ReadRemoteTree(const std::string& server, const RemoteFolder& start, Effort effort,
                          const SideTasks& beside, const KeptFiles& kept) {
  ListedFolder listed = ToList(start);
  ListTree(listed, effort, beside);
  Naming naming(server, effort, kept);
  naming.TakeAll(start.path, listed);
  naming.AskForVersions();
  return naming.TakeTree();
}

RemoteLevel ReadRemoteLevel(const std::string& server, const std::vector<RemoteFolder>& wanted,
                            Effort effort) {
  std::vector<ListedFolder> listed = ListAll(wanted, effort);
  Naming naming(server, effort);
  RemoteLevel level;
  for (std::size_t number = 0; number < wanted.size(); ++number) {
    for (auto& below : naming.Take(wanted[number].path, listed[number])) {
      level.below.push_back(std::move(below.folder));
    }
  }
  level.tree = naming.TakeTree();
  return level;
}

RemoteTree ReadRemoteFolders(const std::string& server, const std::vector<RemoteFolder>& wanted,
                             Effort effort, const KeptFiles& kept) {
  std::vector<ListedFolder> listed = ListAll(wanted, effort);
  Naming naming(server, effort, kept);
  for (std::size_t number = 0; number < wanted.size(); ++number) {
    static_cast<void>(naming.Take(wanted[number].path, listed[number]));
  }
  naming.AskForVersions();
  return naming.TakeTree();
}

RemoteFolder FolderOfDocument(const std::string& path, const std::string& address) {
  const std::size_t slash = path.rfind('/');
  return {slash == std::string::npos ? "" : path.substr(0, slash + 1),
          address.substr(0, address.rfind('/') + 1)};
}

}  // namespace vtdirect_cli
