#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "hosts/mount/tree/folder_listing.h"

namespace vtdirect_mount {

/// Tells which documents a program will ask for next. A program that asks for one entry of a folder after the
/// other, as "ls -l" does, waits for each answer; those that come next can be asked for meanwhile. Several may
/// walk a folder at a time, as the readers of "xargs -P 8" do. Any thread. Makes no request.
class Lookahead {
 public:
  /// @param depth  how many entries to look ahead
  explicit Lookahead(std::size_t depth) : depth_(depth) {}

  /// Notes that an entry was asked for.
  /// @return names in paths of the documents to be asked for now; none unless entries were asked for in the
  ///         order of the listing, three times at least
  [[nodiscard]] std::vector<std::string> Note(const std::string& folder, const FolderListing& listing,
                                              const FolderEntry& entry);

 private:
  struct Walk {
    std::size_t last = 0;     // the entry that was asked for last
    std::size_t reached = 0;  // up to where it was looked ahead
    std::size_t steps = 0;    // how many entries were asked for in order
  };

  [[nodiscard]] static Walk& WalkTo(std::size_t index, std::vector<Walk>& walks);

  const std::size_t depth_;
  std::mutex mutex_;
  std::unordered_map<std::string, std::vector<Walk>>
      walks_;  // by folder, the one that went on last at the end
};

}  // namespace vtdirect_mount
