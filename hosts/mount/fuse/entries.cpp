#include "hosts/mount/fuse/entries.h"

#include <cerrno>
#include <set>
#include <utility>

#include "hosts/mount/names/shown_name.h"

namespace vtdirect_mount {
namespace {

constexpr mode_t directoryMode = S_IFDIR | 0555U;
constexpr mode_t fileMode = S_IFREG | 0444U;
constexpr mode_t writableMode = 0644U;
constexpr std::uint64_t blockBytes = 512;

template <typename Value>
[[nodiscard]] Answer<Value> KnownOnly(Answer<Value> answer) {
  if (answer.value == nullptr && answer.error == 0) answer.error = EAGAIN;
  return answer;
}

[[nodiscard]] Answer<FolderListing> ListingOf(Mount& mount, const std::string& folder, Effort effort) {
  return effort == Effort::Ask ? mount.tree().Folder(folder) : KnownOnly(mount.tree().PeekFolder(folder));
}

[[nodiscard]] struct stat DirectoryAttributes(const Mount& mount) {
  struct stat attributes = mount.pattern();
  attributes.st_mode = mount.writing() == nullptr ? directoryMode : directoryMode | S_IWUSR;
  return attributes;
}

[[nodiscard]] struct stat FileAttributes(const Mount& mount, const Facts& facts) {
  struct stat attributes = mount.pattern();
  attributes.st_mode = fileMode;
  attributes.st_size = static_cast<off_t>(facts.size);
  attributes.st_blocks = static_cast<blkcnt_t>((facts.size + blockBytes - 1) / blockBytes);
  attributes.st_mtim = {facts.since, 0};
  attributes.st_ctim = attributes.st_atim = attributes.st_mtim;
  return attributes;
}

[[nodiscard]] bool IsDirectory(NodeKind kind) {
  return kind != NodeKind::Document && kind != NodeKind::VersionFile;
}

[[nodiscard]] Node NodeBelow(const Node& parent, const std::string& name, NodeKind kind,
                             std::string address) {
  Node node;
  node.parent = parent.number;
  node.name = name;
  node.kind = kind;
  node.address = std::move(address);
  return node;
}

// "B.3.lxz" for version B.3 of "fork.lxz", so that programs know the kind of the file by its name.
[[nodiscard]] std::string NameOfVersion(const std::string& version, const std::string& document) {
  const std::string shown = ShownName(document);
  const std::size_t dot = shown.rfind('.');
  const bool hasEnding = dot != std::string::npos && dot > 0;
  return ShownFolderName(version) + (hasEnding ? shown.substr(dot) : "");
}

// The versions with the names of their files. A server that tells a version twice is believed once.
[[nodiscard]] std::vector<std::pair<std::string, std::string>> VersionFiles(
    const std::vector<DocumentVersion>& versions, const std::string& document) {
  std::vector<std::pair<std::string, std::string>> files;
  std::set<std::string> names;
  for (const DocumentVersion& version : versions) {
    const std::string name = NameOfVersion(version.text, document);
    if (!version.id.empty() && names.insert(name).second) files.emplace_back(name, version.id);
  }
  return files;
}

[[nodiscard]] Answer<LookedUp> WithAttributes(Mount& mount, Node node, Effort effort) {
  const Answer<struct stat> attributes = AttributesOf(mount, node, effort);
  if (attributes.value == nullptr) return {attributes.error};
  return Found(LookedUp{std::move(node), *attributes.value});
}

[[nodiscard]] const FolderEntry* EntryIn(const Answer<FolderListing>& listing, const std::string& name) {
  return listing.value == nullptr ? nullptr : listing.value->Find(name);
}

// What lies over a folder is there while its server is away, and an old listing tells well enough what a name is for.
// Neither value nor error when nothing of that name lies there.
[[nodiscard]] Answer<LookedUp> LookUpLocal(Mount& mount, const Node& parent, const std::string& name,
                                           Effort effort) {
  auto listing = mount.tree().RecallFolder(parent.address);
  if (listing.value == nullptr) listing = ListingOf(mount, parent.address, effort);
  if (listing.error == EAGAIN) return {EAGAIN};
  const FolderEntry* const entry = EntryIn(listing, name);
  if (entry != nullptr && entry->isFolder) return {};
  const std::string address = AddressIn(mount, parent, name);
  const Overlay& overlay = mount.writing()->overlay();
  if (overlay.IsAside(address, Overlay::Clock::now())) return {ENOENT};
  if (overlay.Find(address) == nullptr) return {};
  return WithAttributes(mount, NodeBelow(parent, name, NodeKind::Document, address), effort);
}

[[nodiscard]] Answer<LookedUp> LookUpInFolder(Mount& mount, const Node& parent, const std::string& name,
                                              Effort effort) {
  if (mount.writing() != nullptr) {
    const auto local = LookUpLocal(mount, parent, name, effort);
    if (local.value != nullptr || local.error != 0) return local;
  }
  const auto listing = ListingOf(mount, parent.address, effort);
  if (listing.value == nullptr) return {listing.error};
  if (name == versionsFolder) {
    if (listing.value->documents() == 0) return {ENOENT};
    return WithAttributes(mount, NodeBelow(parent, name, NodeKind::VersionsRoot, parent.address), effort);
  }
  const FolderEntry* const entry = listing.value->Find(name);
  if (entry == nullptr) return {ENOENT};
  if (entry->isFolder) {
    const std::string path = parent.address + entry->name + "/";
    return WithAttributes(mount, NodeBelow(parent, name, NodeKind::Folder, path), effort);
  }
  if (effort == Effort::Known) mount.LookAhead(parent.address, *listing.value, *entry);
  return WithAttributes(mount, NodeBelow(parent, name, NodeKind::Document, parent.address + entry->name),
                        effort);
}

[[nodiscard]] Answer<LookedUp> LookUpDocumentOfVersions(Mount& mount, const Node& parent,
                                                        const std::string& name, Effort effort) {
  const auto listing = ListingOf(mount, parent.address, effort);
  if (listing.value == nullptr) return {listing.error};
  const FolderEntry* const entry = listing.value->Find(name);
  if (entry == nullptr || entry->isFolder) return {ENOENT};
  return WithAttributes(mount, NodeBelow(parent, name, NodeKind::VersionsOf, parent.address + entry->name),
                        effort);
}

[[nodiscard]] Answer<LookedUp> LookUpVersion(Mount& mount, const Node& parent, const std::string& name,
                                             Effort effort) {
  if (effort == Effort::Known) return {EAGAIN};
  const auto [folder, document] = PartsOfPath(parent.address);
  const auto versions = mount.tree().VersionsOf(folder, document);
  if (versions.value == nullptr) return {versions.error};
  for (const auto& [file, uid] : VersionFiles(*versions.value, document)) {
    if (file == name) {
      return WithAttributes(mount, NodeBelow(parent, name, NodeKind::VersionFile, uid), effort);
    }
  }
  return {ENOENT};
}

[[nodiscard]] DirectoryLine LineOf(const std::string& name, NodeKind kind, const std::string& address) {
  return {name, NodeTable::LikelyNumber(kind, address), IsDirectory(kind)};
}

[[nodiscard]] std::vector<DirectoryLine> LinesOfFolder(const Node& directory, const FolderListing& listing) {
  const bool showsDocumentsAlone = directory.kind == NodeKind::VersionsRoot;
  std::vector<DirectoryLine> lines;
  lines.reserve(listing.entries().size());
  for (const FolderEntry& entry : listing.entries()) {
    const std::string path = directory.address + entry.name;
    if (showsDocumentsAlone) {
      if (!entry.isFolder) lines.push_back(LineOf(entry.shown, NodeKind::VersionsOf, path));
    } else if (entry.isFolder) {
      lines.push_back(LineOf(entry.shown, NodeKind::Folder, path + "/"));
    } else {
      lines.push_back(LineOf(entry.shown, NodeKind::Document, path));
    }
  }
  return lines;
}

// What lies over the folder: files that are here alone, and documents that were put aside.
void AddLocalFiles(const Node& directory, const FolderListing& listing, const Overlay& overlay,
                   std::vector<DirectoryLine>& lines) {
  const auto now = Overlay::Clock::now();
  std::erase_if(lines, [&](const DirectoryLine& line) {
    return !line.isFolder && overlay.IsAside(directory.address + listing.Find(line.name)->name, now);
  });
  for (const std::string& name : overlay.NamesIn(directory.address)) {
    const std::string shown = ShownName(name);
    if (listing.Find(shown) == nullptr && !overlay.IsAside(directory.address + name, now)) {
      lines.push_back(LineOf(shown, NodeKind::Document, directory.address + name));
    }
  }
}

}  // namespace

Answer<Iteration> IterationOf(Mount& mount, const Node& file, Effort effort) {
  if (file.kind == NodeKind::VersionFile) {
    return effort == Effort::Ask ? mount.tree().IterationOf(file.address) : Answer<Iteration>{EAGAIN};
  }
  mount.LearnCheckouts();
  const auto [folder, name] = PartsOfPath(file.address);
  return effort == Effort::Ask ? mount.tree().Document(folder, name)
                               : KnownOnly(mount.tree().PeekDocument(folder, name));
}

Answer<Iteration> IterationToRead(Mount& mount, const Node& file) {
  if (file.kind == NodeKind::VersionFile) return mount.tree().IterationOf(file.address);
  const auto [folder, name] = PartsOfPath(file.address);
  return mount.tree().DocumentToRead(folder, name);
}

struct stat AttributesOfLocal(const Mount& mount, const LocalFile& file) {
  struct stat attributes = mount.pattern();
  struct stat local = {};
  if (fstat(file.file().descriptor(), &local) != 0) return attributes;
  attributes.st_mode = S_IFREG | (file.isScratch() ? file.mode() : writableMode);
  attributes.st_size = local.st_size;
  attributes.st_blocks = local.st_blocks;
  // As of a document: the time must be the same after it is stored.
  attributes.st_mtim = {local.st_mtim.tv_sec, 0};
  attributes.st_ctim = attributes.st_atim = attributes.st_mtim;
  return attributes;
}

Answer<struct stat> AttributesOf(Mount& mount, const Node& node, Effort effort) {
  if (IsDirectory(node.kind)) return Found(DirectoryAttributes(mount));
  if (const auto local = mount.LocalAt(node)) return Found(AttributesOfLocal(mount, *local));
  const auto iteration = IterationOf(mount, node, effort);
  if (iteration.value == nullptr) return {iteration.error};
  struct stat attributes = FileAttributes(mount, iteration.value->facts);
  if (node.kind == NodeKind::Document && mount.writing() != nullptr && CanChange(iteration.value->uid)) {
    attributes.st_mode = S_IFREG | writableMode;
  }
  return Found(attributes);
}

std::string AddressIn(Mount& mount, const Node& folder, const std::string& name) {
  const auto listing = mount.tree().RecallFolder(folder.address);
  const FolderEntry* const entry = EntryIn(listing, name);
  return folder.address + (entry != nullptr && !entry->isFolder ? entry->name : NameInPath(name));
}

Answer<LookedUp> LookUp(Mount& mount, const Node& parent, const std::string& name, Effort effort) {
  switch (parent.kind) {
    case NodeKind::Folder:
      return LookUpInFolder(mount, parent, name, effort);
    case NodeKind::VersionsRoot:
      return LookUpDocumentOfVersions(mount, parent, name, effort);
    case NodeKind::VersionsOf:
      return LookUpVersion(mount, parent, name, effort);
    default:
      return {ENOTDIR};
  }
}

Answer<std::vector<DirectoryLine>> LinesOf(Mount& mount, const Node& directory) {
  if (directory.kind == NodeKind::VersionsOf) {
    const auto [folder, document] = PartsOfPath(directory.address);
    const auto versions = mount.tree().VersionsOf(folder, document);
    if (versions.value == nullptr) return {versions.error};
    std::vector<DirectoryLine> lines;
    for (const auto& [file, uid] : VersionFiles(*versions.value, document)) {
      lines.push_back(LineOf(file, NodeKind::VersionFile, uid));
    }
    return Found(std::move(lines));
  }
  const auto listing = ListingOf(mount, directory.address, Effort::Ask);
  if (listing.value == nullptr) return {listing.error};
  std::vector<DirectoryLine> lines = LinesOfFolder(directory, *listing.value);
  if (mount.writing() != nullptr && directory.kind == NodeKind::Folder) {
    AddLocalFiles(directory, *listing.value, mount.writing()->overlay(), lines);
  }
  return Found(std::move(lines));
}

}  // namespace vtdirect_mount
