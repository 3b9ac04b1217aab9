#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "public/session.h"

namespace lxservices::cms_interface {

/// The sessions that were handed out and not yet found expired, each with the keys of the servers that it has
/// written off. Any thread may call at any time; nothing here makes a request.
///
/// A walk never holds a session, not even for an instant: the host's release ends it at once, for whichever
/// thread asks next.
class SessionList {
 public:
  void Add(const std::shared_ptr<VtDirectManager::Session>& session);

  /// Whether a live session has written this key off. The walk ends at the first hit and drops the expired
  /// sessions up to there.
  [[nodiscard]] bool IsBlocked(const std::string& key);

  /// Writes a key off in every live session. Drops the expired ones.
  void Block(const std::string& key);

  /// How many are in the list, live or not.
  [[nodiscard]] std::size_t size() const;

  /// The keys that a session of this list has written off.
  [[nodiscard]] std::set<std::string> BlockedKeys(
      const std::shared_ptr<VtDirectManager::Session>& session) const;

 private:
  struct Entry {
    std::weak_ptr<VtDirectManager::Session> session;
    std::set<std::string> blockedKeys;
  };
  template <typename Visit>
  bool VisitLive(Visit visit);

  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
};

}  // namespace lxservices::cms_interface
