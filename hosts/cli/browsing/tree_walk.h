#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "hosts/cli/browsing/listing.h"

namespace vtdirect_cli {

/// Where a walk has to end, whatever the server delivers. A folder that contains itself shows as an endless
/// path, since a listing gives folders no identity; so it is the depth and the number of folders that end it.
struct TreeBounds {
  std::uint32_t depth = 64;                     ///< levels below the start that are shown
  std::uint64_t folders = 1'000'000;            ///< folders that are listed
  std::uint64_t waitingBytes = 64ULL << 20ULL;  ///< names of folders that wait to be entered, on all levels
};

/// One line of the tree. The texts are valid during the call only.
struct TreeEntry {
  const std::string& path;  ///< a folder's closes with "/"
  const std::string& name;
  bool isFolder;
  std::uint32_t depth;  ///< 1 for what lies in the start
};

/// What a walk works with.
struct TreeWork {
  /// Lists one folder by its path.
  std::function<ListingEnd(const std::string& path, const EntryFunction& receive)> list;
  /// Shows an entry. False ends the walk.
  std::function<bool(const TreeEntry& entry)> show;
  /// Told of a folder below the start that could not be listed, or not whole. False ends the walk.
  std::function<bool(const std::string& path, ListingEnd end)> failed;
  /// Told before each folder is listed which ones come after it, the nearest first. May be empty.
  std::function<void(std::vector<std::string> paths)> expect = {};
  std::size_t expected = 0;  ///< how many of them it wants to know
};

/// How a walk ended.
struct TreeEnd {
  ListingEnd start = ListingEnd::Whole;  ///< how the listing of the start itself ended
  bool stopped = false;                  ///< by `show` or `failed`
  bool failures = false;                 ///< `failed` was called
  bool folderBound = false;              ///< as many folders were listed as the bounds allow
  bool waitingBound = false;             ///< folders were left out, for their names took too much memory
  std::uint64_t beyondDepth = 0;         ///< folders that were shown and not entered, for their depth
  std::uint64_t notEnterable = 0;        ///< folders whose name can't be in a path: empty, or with a "/"
};

/// Walks a tree depth first. In each folder the documents come first, as the server delivers them, none of
/// which is kept; then its folders by the bytes of their names, each once. What is kept are the names of the
/// folders of one folder for each level.
/// @param start  path with its closing "/"
[[nodiscard]] TreeEnd WalkTree(const std::string& start, const TreeBounds& bounds, const TreeWork& work);

}  // namespace vtdirect_cli
