#include "public/server_list.h"

#include <map>
#include <utility>

#include "base/server_key.h"
#include "base/settings.h"
#include "platform/uri.h"
#include "public/host_callbacks.h"
#include "public/server_table.h"
#include "public/vt_direct_manager.h"
#include "server/create_file_server.h"

namespace lxservices::cms_interface {
namespace {

// The server objects that one change of the table makes. They are kept while the change is built again, so
// that each is made once.
class NewServers {
 public:
  explicit NewServers(std::string uidScheme) : uidScheme_(std::move(uidScheme)) {}

  [[nodiscard]] const std::string& uidScheme() const { return uidScheme_; }
  [[nodiscard]] std::string KeyOf(const std::string& url) const {
    return NormalizeServerUri(url.c_str(), uidScheme_);
  }

  // The server of a URL. Servers without a key are told apart by their nicknames.
  std::shared_ptr<FileServer> Make(const std::string& nickname, const std::string& url) {
    const std::string key = KeyOf(url);
    auto& server = servers_[{key.empty() ? nickname : std::string(), url}];
    if (server == nullptr) server = CreateFileServer(url.c_str(), key, ForwardAuth);
    return server;
  }

 private:
  std::string uidScheme_;
  std::map<std::pair<std::string, std::string>, std::shared_ptr<FileServer>> servers_;
};

// Enters a nickname, with a new server object unless the table has one for it.
std::shared_ptr<FileServer> Enter(ServerTable& table, const std::string& nickname, const std::string& url,
                                  NewServers& made) {
  const std::string key = made.KeyOf(url);
  auto& server = key.empty() ? table.keylessServers[nickname] : table.servers[key];
  if (server == nullptr || (key.empty() && server->GetServerURL() != url)) server = made.Make(nickname, url);
  // A nickname that had no key until now leaves nothing behind.
  if (!key.empty()) table.keylessServers.erase(nickname);
  table.nicknames[nickname] = key;
  return server;
}

// Takes over the server that the table had for an entry of the host's list, as far as it still serves it. A
// kept object keeps its login and what it has learnt of the server.
void KeepServer(const ServerTable& before, ServerTable& table, const std::string& nickname,
                const std::string& url, const NewServers& made) {
  const std::string key = made.KeyOf(url);
  const auto& servers = key.empty() ? before.keylessServers : before.servers;
  const auto old = servers.find(key.empty() ? nickname : key);
  if (old == servers.end() || old->second == nullptr) return;
  if (key.empty()) {
    table.keylessServers[nickname] = old->second;
  } else if (ServesUrl(*old->second, url, made.uidScheme())) {
    table.servers[key] = old->second;
  }
}

ServerTable MakeTable(const ServerTable& before, const std::map<std::string, std::string>& wanted,
                      NewServers& made) {
  ServerTable table;
  for (const auto& [nickname, url] : wanted) {
    const std::string text = WithTrailingSlash(url);
    KeepServer(before, table, nickname, text, made);
    Enter(table, nickname, text, made);
  }
  return table;
}

// The host of a URL, with a suffix while there is a server of that nickname. Each suffix goes after the one
// before, so the series runs "host", "host-1", "host-1-2": that is the series to keep, since paths that hosts
// hold contain these nicknames.
std::string DeriveNickname(const ServerTable& table, const std::string& url) {
  std::string nickname = du::GetURIPart(url, du::URIPart::Host);
  for (int counter = 1; FindServerByNickname(table, nickname) != nullptr; ++counter) {
    nickname += "-" + std::to_string(counter);
  }
  return nickname;
}

// Replaces the table by what `change` makes of a copy of it, and gives what `change` gave.
template <typename Change>
std::shared_ptr<FileServer> ChangeTable(Change change) {
  while (true) {
    const auto seen = TheManagerState().table();
    ServerTable next = *seen;
    auto server = change(next);
    if (TheManagerState().ReplaceTable(seen, std::move(next))) return server;
  }
}

}  // namespace

std::shared_ptr<FileServer> AddServer(const std::string& nickname, const std::string& url) {
  NewServers made(CurrentSettings()->uidScheme);
  return ChangeTable([&](ServerTable& table) { return Enter(table, nickname, url, made); });
}

std::shared_ptr<FileServer> AddServerWithDerivedNickname(const std::string& url) {
  NewServers made(CurrentSettings()->uidScheme);
  const std::string text = WithTrailingSlash(url);
  return ChangeTable([&](ServerTable& table) {
    if (auto entered = FindServerByUrl(table, text.c_str())) return entered;
    return Enter(table, DeriveNickname(table, text), text, made);
  });
}

}  // namespace lxservices::cms_interface

namespace VtDirectManager {

using namespace lxservices::cms_interface;

void UpdateServerList(const std::map<std::string, std::string>& servers) {
  // A copy: making a server calls the platform, and with it perhaps the host, whose map this is.
  const auto wanted = servers;
  NewServers made(CurrentSettings()->uidScheme);
  while (true) {
    const auto seen = TheManagerState().table();
    if (TheManagerState().ReplaceTable(seen, MakeTable(*seen, wanted, made))) break;
  }
  TheManagerState().invalidateCache = true;
}

void ReadRootDirs(void (*callback)(const char* nickname, void* user), void* user) {
  // The whole list of now, which a callback or another thread may replace meanwhile.
  const auto table = TheManagerState().table();
  for (const auto& entry : table->nicknames) callback(entry.first.c_str(), user);
}

bool ShouldInvalidateCache(bool clear) {
  auto& flag = TheManagerState().invalidateCache;
  return clear ? flag.exchange(false) : flag.load();
}

}  // namespace VtDirectManager
