#include "public/sessions.h"

#include "public/manager_state.h"
#include "public/vt_direct_manager.h"

namespace lxservices::cms_interface {
namespace {

// Visits live sessions in order until `visit` gives true, and removes the expired ones that it comes across.
template <typename Visit>
bool VisitLiveSessions(Visit visit) {
  auto& sessions = TheManagerState().table.sessions;
  for (auto entry = sessions.begin(); entry != sessions.end();) {
    const auto session = entry->lock();
    if (session == nullptr) {
      entry = sessions.erase(entry);
      continue;
    }
    if (visit(*session)) return true;
    ++entry;
  }
  return false;
}

}  // namespace

bool IsKeyBlocked(const std::string& key) {
  return VisitLiveSessions(
      [&key](const VtDirectManager::Session& session) { return session.blockedKeys.count(key) != 0; });
}

void BlockServerInSessions(const std::shared_ptr<FileServer>& server) {
  if (server == nullptr || TheManagerState().table.sessions.empty()) return;
  const std::string key = server->GetServerKey();
  VisitLiveSessions([&key](VtDirectManager::Session& session) {
    session.blockedKeys.insert(key);
    return false;
  });
}

}  // namespace lxservices::cms_interface

namespace VtDirectManager {

std::shared_ptr<Session> StartSession() {
  auto session = std::make_shared<Session>();
  lxservices::cms_interface::TheManagerState().table.sessions.push_back(session);
  return session;
}

}  // namespace VtDirectManager
