#include "hosts/mount/tree/lookahead.h"

#include <algorithm>

namespace vtdirect_mount {
namespace {

constexpr std::size_t stepsOfAWalk = 3;
// What the kernel knows already is not asked for, and folders are passed over.
constexpr std::size_t widestStep = 8;

}  // namespace

std::vector<std::string> Lookahead::Note(const std::string& folder, const FolderListing& listing,
                                         const FolderEntry& entry) {
  const auto index = static_cast<std::size_t>(&entry - listing.entries().data());
  std::vector<std::string> names;
  const std::lock_guard lock(mutex_);
  Walk& walk = walks_[folder];
  const bool goesOn = walk.steps > 0 && index > walk.last && index - walk.last <= widestStep;
  if (!goesOn) walk = {};
  ++walk.steps;
  walk.last = index;
  if (walk.steps < stepsOfAWalk) return names;
  const std::size_t end = std::min(index + 1 + depth_, listing.entries().size());
  for (std::size_t next = std::max(walk.reached, index + 1); next < end; ++next) {
    if (!listing.entries()[next].isFolder) names.push_back(listing.entries()[next].name);
  }
  walk.reached = std::max(walk.reached, end);
  return names;
}

}  // namespace vtdirect_mount
