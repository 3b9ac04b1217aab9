#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "hosts/mount/requests/answer.h"

namespace vtdirect_mount {

/// One entry of a folder.
struct FolderEntry {
  std::string shown;  ///< the name that programs see
  std::string name;   ///< the name in a path
  bool isFolder = false;
};

/// What a folder holds, in the server's order. No two entries are shown under one name.
class FolderListing {
 public:
  /// Takes an entry in, unless there is one of its kind with that name: a server lists some documents once
  /// for each of their versions, the newest first. A document beside a folder of the same name is shown with
  /// "~" at its end.
  /// @param name  as the library lists it
  void Add(const std::string& name, bool isFolder);

  [[nodiscard]] const std::vector<FolderEntry>& entries() const { return entries_; }
  /// How many of them are documents.
  [[nodiscard]] std::size_t documents() const { return documents_; }
  /// The entry that is shown under a name; null without one.
  [[nodiscard]] const FolderEntry* Find(const std::string& shown) const;
  /// Whether there is a document of this name in a path.
  [[nodiscard]] bool HasDocument(const std::string& name) const;

 private:
  std::vector<FolderEntry> entries_;
  std::unordered_map<std::string, std::size_t> byShown_;
  std::size_t documents_ = 0;
};

/// One version of a document.
struct DocumentVersion {
  std::string text;  ///< "B.3"
  std::string id;    ///< the server's id of the iteration
};

/// The versions of the documents of a folder, the newest first, by the documents' names in paths.
using FolderVersions = std::unordered_map<std::string, std::vector<DocumentVersion>>;

/// Lists a folder. Makes requests.
/// @param path  with its closing "/"
[[nodiscard]] Answer<FolderListing> ListFolder(const std::string& path);

/// Lists the versions of a folder's documents. Makes requests.
/// @return ENOTSUP when the server shows none there
[[nodiscard]] Answer<FolderVersions> ListVersions(const std::string& path);

}  // namespace vtdirect_mount
