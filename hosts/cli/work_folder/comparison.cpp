#include "hosts/cli/work_folder/comparison.h"

#include <algorithm>

#include "hosts/cli/checkouts/kept_checkout.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] FileState StateOfKept(LocalState local, const FolderFile& file, bool isKnown,
                                    const std::optional<RemoteDocument>& document) {
  if (local == LocalState::Missing && (document || !isKnown)) return FileState::Missing;
  if (isKnown && !document) return FileState::Gone;
  const bool isNewer = document && !AreSameUid(document->uid, file.uid);
  if (local == LocalState::Modified) return isNewer ? FileState::Both : FileState::Modified;
  return isNewer ? FileState::Newer : FileState::Same;
}

[[nodiscard]] std::optional<RemoteDocument> DocumentAt(const RemoteTree& tree, const std::string& path) {
  const auto found = tree.documents.find(path);
  return found == tree.documents.end() ? std::nullopt : std::optional(found->second);
}

[[nodiscard]] LocalState StateAt(const LocalSide& local, const std::string& path) {
  const auto found = local.states.find(path);
  return found == local.states.end() ? LocalState::Missing : found->second;
}

// A process that was killed may have put a file in its place and not kept that it did.
void TakeWhatArrived(WorkFolder& folder, KeptFiles& kept) {
  for (FolderFile& file : folder.store().Announced()) {
    const LocalFacts facts = FactsOf(folder.OnDisk(file.path));
    if (!HasBytesOf(folder.OnDisk(file.path), facts, file)) continue;
    if (file.time != facts.time) file.time = TimeToKeep(facts.time, facts.seen);
    kept[file.path] = file;
  }
}

}  // namespace

const char* WordOf(FileState state) {
  switch (state) {
    case FileState::Modified:
      return "modified";
    case FileState::Newer:
      return "newer";
    case FileState::Both:
      return "both";
    case FileState::Missing:
      return "missing";
    case FileState::New:
      return "new";
    case FileState::InTheWay:
      return "in-the-way";
    case FileState::Unknown:
      return "unknown";
    case FileState::Gone:
      return "gone";
    default:
      return "same";
  }
}

Result<KeptFiles> ReadKept(WorkFolder& folder) {
  auto files = folder.store().Files();
  if (!files) return StoreFailure("its database does not answer");
  TakeWhatArrived(folder, *files);
  return std::move(*files);
}

Result<LocalSide> ReadLocalSide(WorkFolder& folder) {
  auto kept = ReadKept(folder);
  if (!kept) return kept.failure();
  LocalSide side;
  side.kept = std::move(*kept);
  for (const auto& [path, file] : side.kept) {
    side.states.emplace(path, StateOf(folder.store(), folder.OnDisk(path), file));
  }
  side.files = FilesBelow(folder.root());
  return side;
}

std::vector<Comparison> Compare(const LocalSide& local, const RemoteTree& tree) {
  std::map<std::string, Comparison> all;
  for (const auto& [path, file] : local.kept) {
    const auto document = DocumentAt(tree, path);
    const LocalState state = StateAt(local, path);
    all[path] = {.path = path,
                 .state = StateOfKept(state, file, tree.Knows(path), document),
                 .isModified = state == LocalState::Modified,
                 .file = file,
                 .document = document};
  }
  for (const std::string& path : local.files) {
    if (all.contains(path)) continue;
    const auto document = DocumentAt(tree, path);
    all[path] = {
        .path = path, .state = document ? FileState::InTheWay : FileState::Unknown, .document = document};
  }
  for (const auto& [path, document] : tree.documents) {
    if (!all.contains(path)) all[path] = {.path = path, .state = FileState::New, .document = document};
  }
  std::vector<Comparison> sorted;
  for (auto& [path, comparison] : all) sorted.push_back(std::move(comparison));
  return sorted;
}

}  // namespace vtdirect_cli
