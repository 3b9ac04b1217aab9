#include "hosts/cli/work_folder/local_names.h"

#include <algorithm>
#include <tuple>

#include "hosts/cli/files/target_file.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] bool IsFit(const std::string& name) {
  return !name.empty() && name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

[[nodiscard]] bool HaveVersionInCommon(const ListedDocument& one, const ListedDocument& other) {
  return std::any_of(one.ids.begin(), one.ids.end(), [&other](const std::string& id) {
    return std::find(other.ids.begin(), other.ids.end(), id) != other.ids.end();
  });
}

// Rows of one document: a server may tell each of its versions in a row of its own.
[[nodiscard]] bool AreOneDocument(const ListedDocument& one, const ListedDocument& other) {
  if (one.name != other.name) return false;
  if (!one.number.empty() && !other.number.empty()) return one.number == other.number;
  return one.ids.empty() || other.ids.empty() || HaveVersionInCommon(one, other);
}

// The row that tells most versions has the newest.
[[nodiscard]] std::vector<ListedDocument> Merged(std::vector<ListedDocument> rows) {
  std::vector<ListedDocument> documents;
  for (ListedDocument& row : rows) {
    const auto known =
        std::find_if(documents.begin(), documents.end(),
                     [&row](const ListedDocument& document) { return AreOneDocument(document, row); });
    if (known == documents.end()) {
      documents.push_back(std::move(row));
    } else if (known->versions.size() < row.versions.size()) {
      *known = std::move(row);
    }
  }
  return documents;
}

// In front of the extension, so that the file is opened by what opens its kind.
[[nodiscard]] std::string WithSuffix(const std::string& name, const std::string& suffix) {
  const std::size_t dot = name.rfind('.');
  const std::string inserted = "%(" + SafeFileName(suffix) + ")";
  if (dot == std::string::npos || dot == 0) return name + inserted;
  return name.substr(0, dot) + inserted + name.substr(dot);
}

[[nodiscard]] bool IsTaken(const NamedEntries& entries, const std::string& name) {
  return entries.documents.contains(name) || entries.folders.contains(name);
}

[[nodiscard]] std::string FreeName(const NamedEntries& entries, const ListedDocument& document) {
  const std::string name = SafeFileName(document.name);
  if (!IsTaken(entries, name)) return name;
  const std::string number = document.number.empty() ? "2" : document.number;
  std::string free = WithSuffix(name, number);
  for (int count = 2; IsTaken(entries, free); ++count)
    free = WithSuffix(name, number + "-" + std::to_string(count));
  return free;
}

// Without the rows of one document that tell it again. A name that can't stand in a path is told to `nameless`.
[[nodiscard]] std::vector<ListedDocument> DocumentsIn(std::vector<ListedDocument> rows,
                                                      std::vector<std::string>& nameless) {
  // Comparing each row with each would take long in a large folder, so rows of one name come together.
  std::stable_sort(rows.begin(), rows.end(), [](const ListedDocument& one, const ListedDocument& other) {
    return std::tie(one.name, one.number) < std::tie(other.name, other.number);
  });
  std::vector<ListedDocument> documents;
  for (std::size_t begin = 0; begin < rows.size();) {
    std::vector<ListedDocument> namesakes;
    const std::string name = rows[begin].name;
    for (; begin < rows.size() && rows[begin].name == name; ++begin) {
      namesakes.push_back(std::move(rows[begin]));
    }
    if (!IsFit(name)) {
      nameless.push_back(name);
      continue;
    }
    for (ListedDocument& document : Merged(std::move(namesakes))) documents.push_back(std::move(document));
  }
  return documents;
}

[[nodiscard]] std::string KeptNameOf(const KeptNames& kept, const ListedDocument& document) {
  for (const std::string& id : document.ids) {
    const auto found = kept.find(id);
    if (found != kept.end() && found->second.nameOnServer == document.name) return found->second.name;
  }
  return {};
}

constexpr const char* folderSuffix = "%(folder)";

// Gives the folders of which files are here the names that they have, and gives the others.
[[nodiscard]] std::vector<std::string> KeepFolders(const std::vector<std::string>& folders,
                                                   const KeptFolders& kept, NamedEntries& entries) {
  std::vector<std::string> others;
  for (const std::string& folder : folders) {
    const auto found = kept.find(folder);
    const std::string name = SafeFileName(folder);
    const bool isItsName =
        found != kept.end() && (found->second == name || found->second == name + folderSuffix);
    const bool isKept = isItsName && !IsTaken(entries, found->second);
    if (isKept) entries.folders.emplace(found->second, folder);
    if (!isKept) others.push_back(folder);
  }
  return others;
}

void NameFolders(const std::vector<std::string>& folders, NamedEntries& entries) {
  for (const std::string& folder : folders) {
    if (!IsFit(folder)) {
      entries.nameless.push_back(folder);
      continue;
    }
    const std::string name = SafeFileName(folder);
    const std::string local = entries.documents.contains(name) ? name + folderSuffix : name;
    const auto [named, isNew] = entries.folders.emplace(local, folder);
    // A server may have folders whose names are escaped already.
    if (!isNew && named->second != folder) entries.nameless.push_back(folder);
  }
}

}  // namespace

NamedEntries NameEntries(std::vector<ListedDocument> documents, const std::vector<std::string>& folders,
                         const KeptNames& kept, const KeptFolders& keptFolders) {
  NamedEntries entries;
  std::vector<ListedDocument> unnamed;
  for (ListedDocument& document : DocumentsIn(std::move(documents), entries.nameless)) {
    const std::string name = KeptNameOf(kept, document);
    const bool isNamed = !name.empty() && entries.documents.emplace(name, document).second;
    if (!isNamed) unnamed.push_back(std::move(document));
  }
  const std::vector<std::string> others = KeepFolders(folders, keptFolders, entries);
  for (ListedDocument& document : unnamed) {
    const std::string name = FreeName(entries, document);
    entries.documents.emplace(name, std::move(document));
  }
  NameFolders(others, entries);
  return entries;
}

}  // namespace vtdirect_cli
