#include "hosts/mount/tree/lookahead.h"

#include <algorithm>
#include <iterator>

namespace vtdirect_mount {
namespace {

constexpr std::size_t stepsOfAWalk = 3;
// What the kernel knows already is not asked for, and folders are passed over.
constexpr std::size_t widestStep = 8;
// Who asks here and there comes close to some walk by chance, so only the last one may take wide steps.
constexpr std::size_t stepOfOthers = 1;
constexpr std::size_t mostWalks = 32;

}  // namespace

// The walk that an entry belongs to, or a new one in the place of the one that has rested for the longest time.
Lookahead::Walk& Lookahead::WalkTo(std::size_t index, std::vector<Walk>& walks) {
  const auto goesOn = [&](const Walk& walk) {
    const std::size_t widest = &walk == &walks.back() ? widestStep : stepOfOthers;
    return index > walk.last && index - walk.last <= widest;
  };
  const auto found = std::find_if(walks.rbegin(), walks.rend(), goesOn);
  if (found != walks.rend()) {
    std::rotate(std::prev(found.base()), found.base(), walks.end());
  } else {
    if (walks.size() == mostWalks) walks.erase(walks.begin());
    walks.emplace_back();
  }
  return walks.back();
}

std::vector<std::string> Lookahead::Note(const std::string& folder, const FolderListing& listing,
                                         const FolderEntry& entry) {
  const auto index = static_cast<std::size_t>(&entry - listing.entries().data());
  std::vector<std::string> names;
  const std::lock_guard lock(mutex_);
  Walk& walk = WalkTo(index, walks_[folder]);
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
