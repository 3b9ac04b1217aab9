#pragma once

#include <memory>
#include <string>

#include "server/file_server.h"

/// Sessions, in which failed servers are written off. Nothing here makes a request. Any thread, any time.
namespace lxservices::cms_interface {

/// Whether a live session has written the server of this key off. Drops expired sessions up to the hit.
[[nodiscard]] bool IsKeyBlocked(const std::string& key);

/// Writes a server off in every live session; remembers nothing when there is none. Drops expired sessions.
void BlockServerInSessions(const std::shared_ptr<FileServer>& server);

}  // namespace lxservices::cms_interface
