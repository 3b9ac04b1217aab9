#include "public/server_table.h"

#include <utility>

#include "base/server_key.h"
#include "base/settings.h"
#include "platform/uri.h"
#include "public/host_callbacks.h"
#include "public/manager_state.h"
#include "public/sessions.h"
#include "public/vt_direct_manager.h"
#include "server/create_file_server.h"

namespace lxservices::cms_interface {
namespace {

ServerTable& Table() {
  return TheManagerState().table;
}

std::string SchemeOf(const std::string& url) {
  return du::GetURIPart(url, du::URIPart::Scheme);
}

// Whether a server object serves a URL of its key. Lopsided on purpose: a caller that names "http" gets a
// server built for "https" and keeps the secure connection, whereas one that names "https" never gets one
// built for "http".
bool ServesUrl(FileServer& server, const std::string& url) {
  const std::string scheme = SchemeOf(url);
  return scheme == "http" || scheme == UidScheme() || scheme == SchemeOf(server.GetServerURL());
}

std::shared_ptr<FileServer> LookUp(const std::string& key) {
  const auto entry = Table().servers.find(key);
  return entry != Table().servers.end() ? entry->second : nullptr;
}

}  // namespace

std::shared_ptr<FileServer> FindServerByNickname(const std::string& nickname) {
  const auto entry = Table().nicknames.find(nickname);
  if (entry == Table().nicknames.end() || IsKeyBlocked(entry->second)) return nullptr;
  return LookUp(entry->second);
}

std::shared_ptr<FileServer> FindServerByKey(const std::string& text) {
  const std::string key = WithTrailingSlash(text);
  return IsKeyBlocked(key) ? nullptr : LookUp(key);
}

std::shared_ptr<FileServer> FindServerByUrl(const char* url) {
  const std::string key = NormalizeServerUri(url);
  if (IsKeyBlocked(key)) return nullptr;
  auto server = LookUp(key);
  if (server == nullptr || !ServesUrl(*server, url != nullptr ? url : "")) return nullptr;
  return server;
}

std::string FindNicknameOfKey(const std::string& key) {
  const std::string wanted = WithTrailingSlash(key);
  for (const auto& [nickname, nicknameKey] : Table().nicknames) {
    if (nicknameKey == wanted) return nickname;
  }
  return {};
}

std::shared_ptr<FileServer> AddServer(const std::string& nickname, const std::string& url) {
  const std::string key = NormalizeServerUri(url.c_str());
  auto& server = Table().servers[key];
  if (server == nullptr) server = CreateFileServer(url.c_str(), ForwardAuth);
  Table().nicknames[nickname] = key;
  return server;
}

std::shared_ptr<FileServer> AddServerWithDerivedNickname(const std::string& url) {
  const std::string text = WithTrailingSlash(url);
  std::string nickname = du::GetURIPart(text, du::URIPart::Host);
  // Each suffix goes behind the one before, so the series runs "host", "host-1", "host-1-2": that is
  // the series to keep, since paths that hosts hold contain these nicknames.
  for (int counter = 1; FindServerByNickname(nickname) != nullptr; ++counter) {
    nickname += "-" + std::to_string(counter);
  }
  return AddServer(nickname, text);
}

}  // namespace lxservices::cms_interface

namespace VtDirectManager {

using namespace lxservices::cms_interface;

void UpdateServerList(const std::map<std::string, std::string>& servers) {
  const auto wanted = servers;
  ServerTable& table = TheManagerState().table;
  const auto before = std::exchange(table.servers, {});
  table.nicknames.clear();
  for (const auto& [nickname, url] : wanted) {
    const std::string text = WithTrailingSlash(url);
    const std::string key = NormalizeServerUri(text.c_str());
    const auto old = before.find(key);
    // A kept object keeps its login and what it has learnt of the server.
    if (old != before.end() && old->second != nullptr && ServesUrl(*old->second, text)) {
      table.servers[key] = old->second;
    }
    AddServer(nickname, text);
  }
  TheManagerState().invalidateCache = true;
}

void ReadRootDirs(void (*callback)(const char* nickname, void* user), void* user) {
  // A copy, so that a callback may change the list.
  const auto nicknames = TheManagerState().table.nicknames;
  for (const auto& entry : nicknames) callback(entry.first.c_str(), user);
}

bool ShouldInvalidateCache(bool clear) {
  bool& flag = TheManagerState().invalidateCache;
  return clear ? std::exchange(flag, false) : flag;
}

}  // namespace VtDirectManager
