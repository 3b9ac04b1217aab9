#pragma once

#include <sys/stat.h>

#include <memory>
#include <string>
#include <vector>

#include "hosts/mount/fuse/mount.h"

namespace vtdirect_mount {

/// Whether an answer may make requests. The threads that take the kernel's requests in make none.
enum class Effort {
  Known,  ///< from what is known; EAGAIN when that is not enough
  Ask,    ///< by requests, which block
};

/// A name that was looked up: what it leads to, and its attributes without the inode number.
struct LookedUp {
  Node node;
  struct stat attributes = {};
};

/// Looks a name up in a directory.
[[nodiscard]] Answer<LookedUp> LookUp(Mount& mount, const Node& parent, const std::string& name,
                                      Effort effort);

/// The address of the document that has a name, or would have it: a listing may show one under another name than that
/// in its path. Goes by what the kernel was told of the folder last, and makes no request.
[[nodiscard]] std::string AddressIn(Mount& mount, const Node& folder, const std::string& name);

/// The attributes of a node.
[[nodiscard]] Answer<struct stat> AttributesOf(Mount& mount, const Node& node, Effort effort);

/// The attributes of a file that was written to here, or is being written to.
[[nodiscard]] struct stat AttributesOfLocal(const Mount& mount, const LocalFile& file);

/// The iteration that a file shows: of a document the newest one.
[[nodiscard]] Answer<Iteration> IterationOf(Mount& mount, const Node& file, Effort effort);

/// The same for a program that is about to read it. May make requests, and block.
[[nodiscard]] Answer<Iteration> IterationToRead(Mount& mount, const Node& file);

/// One line of a directory's listing.
struct DirectoryLine {
  std::string name;
  std::uint64_t number = 0;
  bool isFolder = false;
};

/// What a directory shows. ".versions" is in no listing: programs that walk the tree would fetch all that
/// ever was.
/// @param directory  any node that is one
[[nodiscard]] Answer<std::vector<DirectoryLine>> LinesOf(Mount& mount, const Node& directory);

}  // namespace vtdirect_mount
