#include "hosts/cli/checkouts/newest_iteration.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>

#include "hosts/cli/checkouts/kept_checkout.h"

namespace vtdirect_cli {

std::optional<IterationState> AskForNewest(const std::string& uid) {
  const VtDirectManager::Outcome outcome;
  IterationState state;
  if (VtDirectManager::GetStatus(uid.c_str(), state.version, state.newestVersion, nullptr) < 0) {
    return std::nullopt;
  }
  if (state.isNewest() && NewestIsUntold(outcome)) return std::nullopt;
  return state;
}

std::optional<std::string> NewestUidOf(const std::string& uid) {
  const VtDirectManager::Outcome outcome;
  std::string newest = VtDirectManager::GetLatestUPath(uid.c_str());
  if (!HasObjectId(newest)) return std::nullopt;
  if (AreSameUid(newest, uid) && NewestIsUntold(outcome)) return std::nullopt;
  return newest;
}

bool NewestIsUntold(const VtDirectManager::Outcome& outcome) {
  // The list of versions is asked for when nothing else has told, and has the last word.
  const auto entries = outcome.Entries();
  return std::any_of(entries.begin(), entries.end(), [](const VtDirectManager::Failure& entry) {
    return entry.step == VtDirectManager::stepListVersions;
  });
}

}  // namespace vtdirect_cli
