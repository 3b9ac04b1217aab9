#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "public/session.h"
#include "server/file_server.h"

/// The process-wide state behind VtDirectManager. Plain unsynchronised values.
namespace lxservices::cms_interface {

/// The one place that knows which servers exist, under which nicknames, and which of them a session wrote
/// off. The order of the members is that of their construction: sessions go first, then servers, then
/// nicknames.
struct ServerTable {
  std::map<std::string, std::string> nicknames;                   ///< nickname to server key
  std::map<std::string, std::shared_ptr<FileServer>> servers;     ///< server key to server
  std::vector<std::weak_ptr<VtDirectManager::Session>> sessions;  ///< not yet found expired
};

/// All that the host has set up, beside the settings of SetAppConfig.
struct ManagerState {
  ServerTable table;
  bool (*authCallback)(const char*) = nullptr;
  bool (*taskRunner)(std::function<void()>) = nullptr;
  bool invalidateCache = true;
};

/// The one state, made on first use and gone with the process.
[[nodiscard]] ManagerState& TheManagerState();

}  // namespace lxservices::cms_interface
