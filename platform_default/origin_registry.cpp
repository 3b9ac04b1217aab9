#include "platform_default/origin_registry.h"

#include "platform_default/redirection.h"

namespace vtdirect::platform {
namespace {

/// A server may name any number of others in its addresses and redirects. Beyond this many, the one that was
/// not used for longest is forgotten.
constexpr std::size_t mostOrigins = 256;

std::int64_t WholeSeconds(std::chrono::steady_clock::time_point time) {
  return std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
}

}  // namespace

OriginRegistry& OriginRegistry::Instance() {
  static OriginRegistry& registry = *new OriginRegistry;
  return registry;
}

std::shared_ptr<OriginState> OriginRegistry::StateOf(const Origin& origin) {
  return Find(nullptr, origin);
}

std::shared_ptr<OriginState> OriginRegistry::StateFrom(const std::shared_ptr<OriginState>& home,
                                                       const Origin& origin) {
  return Find(home, origin);
}

std::shared_ptr<OriginState> OriginRegistry::Find(const std::shared_ptr<OriginState>& home,
                                                  const Origin& origin) {
  std::shared_ptr<OriginState> forgotten;  // its handles are closed after the lock is gone
  const std::lock_guard lock(mutex_);
  const std::pair<std::string, std::string> key{(home ? home->origin() : origin).Text(), origin.Text()};
  auto found = entries_.find(key);
  if (found == entries_.end()) {
    if (entries_.size() >= mostOrigins) forgotten = ForgetOne();
    found = entries_.emplace(key, Entry{std::make_shared<OriginState>(home, origin), 0}).first;
  }
  found->second.lastUse = ++uses_;
  return found->second.state;
}

std::shared_ptr<OriginState> OriginRegistry::ForgetOne() {
  auto oldest = entries_.end();
  for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
    // Others than the registry hold it: a connection or an exchange.
    if (entry->second.state.use_count() > 1) continue;
    if (oldest == entries_.end() || entry->second.lastUse < oldest->second.lastUse) oldest = entry;
  }
  if (oldest == entries_.end()) return nullptr;
  std::shared_ptr<OriginState> state = std::move(oldest->second.state);
  entries_.erase(oldest);
  return state;
}

std::vector<std::shared_ptr<OriginState>> OriginRegistry::AllStates() const {
  std::vector<std::shared_ptr<OriginState>> states;
  const std::lock_guard lock(mutex_);
  for (const auto& [key, entry] : entries_) states.push_back(entry.state);
  return states;
}

void OriginRegistry::EndSession(const Origin& origin) {
  OriginState::Handles closed;
  for (const std::shared_ptr<OriginState>& state : AllStates()) {
    if (state->home() != origin && !Secures(origin, state->home())) continue;
    for (auto& handle : state->EndSession()) closed.push_back(std::move(handle));
  }
}

void OriginRegistry::EndAllSessions() {
  OriginState::Handles closed;
  for (const std::shared_ptr<OriginState>& state : AllStates()) {
    for (auto& handle : state->EndSession()) closed.push_back(std::move(handle));
  }
}

void OriginRegistry::CloseExpired() {
  const std::int64_t second = WholeSeconds(std::chrono::steady_clock::now());
  if (lastClosed_.exchange(second) == second) return;
  const du::http::TransportSettings settings = du::http::GetTransportSettings();
  OriginState::Handles closed;
  for (const std::shared_ptr<OriginState>& state : AllStates()) {
    for (auto& handle : state->TakeExpired(settings)) closed.push_back(std::move(handle));
  }
}

}  // namespace vtdirect::platform
