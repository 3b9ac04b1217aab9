#include "public/sessions.h"

#include "public/manager_state.h"
#include "public/vt_direct_manager.h"

namespace lxservices::cms_interface {

bool IsKeyBlocked(const std::string& key) {
  return TheManagerState().sessions.IsBlocked(key);
}

void BlockServerInSessions(const std::shared_ptr<FileServer>& server) {
  if (server != nullptr) TheManagerState().sessions.Block(server->GetServerKey());
}

}  // namespace lxservices::cms_interface

namespace VtDirectManager {

std::shared_ptr<Session> StartSession() {
  auto session = std::make_shared<Session>();
  lxservices::cms_interface::TheManagerState().sessions.Add(session);
  return session;
}

}  // namespace VtDirectManager
