#include "public/session_list.h"

namespace lxservices::cms_interface {

// Visits the live sessions in order until `visit` gives true, and removes the expired ones that it comes
// across.
template <typename Visit>
bool SessionList::VisitLive(Visit visit) {
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    if (entry->session.expired()) {
      entry = entries_.erase(entry);
      continue;
    }
    if (visit(*entry)) return true;
    ++entry;
  }
  return false;
}

void SessionList::Add(const std::shared_ptr<VtDirectManager::Session>& session) {
  const std::lock_guard lock(mutex_);
  entries_.push_back({session, {}});
}

bool SessionList::IsBlocked(const std::string& key) {
  const std::lock_guard lock(mutex_);
  return VisitLive([&key](const Entry& entry) { return entry.blockedKeys.count(key) != 0; });
}

void SessionList::Block(const std::string& key) {
  const std::lock_guard lock(mutex_);
  VisitLive([&key](Entry& entry) {
    entry.blockedKeys.insert(key);
    return false;
  });
}

std::size_t SessionList::size() const {
  const std::lock_guard lock(mutex_);
  return entries_.size();
}

std::set<std::string> SessionList::BlockedKeys(
    const std::shared_ptr<VtDirectManager::Session>& session) const {
  const std::lock_guard lock(mutex_);
  for (const Entry& entry : entries_) {
    const bool isSame = !entry.session.owner_before(session) && !session.owner_before(entry.session);
    if (isSame) return entry.blockedKeys;
  }
  return {};
}

}  // namespace lxservices::cms_interface
