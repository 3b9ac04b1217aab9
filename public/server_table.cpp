#include "public/server_table.h"

#include <algorithm>

#include "base/server_key.h"
#include "base/settings.h"
#include "base/text.h"
#include "platform/uri.h"
#include "public/sessions.h"

namespace lxservices::cms_interface {
namespace {

using Servers = std::map<std::string, std::shared_ptr<FileServer>>;

std::shared_ptr<FileServer> LookUp(const Servers& servers, const std::string& key) {
  const auto entry = servers.find(key);
  return entry != servers.end() ? entry->second : nullptr;
}

// Of servers without a key, which nothing but the very text of the URL tells apart.
std::shared_ptr<FileServer> LookUpUrl(const Servers& keylessServers, const std::string& url) {
  const auto entry = std::find_if(keylessServers.begin(), keylessServers.end(), [&](const auto& candidate) {
    return candidate.second->GetServerURL() == url;
  });
  return entry != keylessServers.end() ? entry->second : nullptr;
}

}  // namespace

std::shared_ptr<FileServer> FindServerByNickname(const ServerTable& table, const std::string& nickname) {
  const auto entry = table.nicknames.find(nickname);
  if (entry == table.nicknames.end()) return nullptr;
  const std::string& key = entry->second;
  if (key.empty()) return LookUp(table.keylessServers, nickname);
  return IsKeyBlocked(key) ? nullptr : LookUp(table.servers, key);
}

std::shared_ptr<FileServer> FindServerByKey(const ServerTable& table, const std::string& text) {
  const std::string key = WithTrailingSlash(text);
  return IsKeyBlocked(key) ? nullptr : LookUp(table.servers, key);
}

std::shared_ptr<FileServer> FindServerByUrl(const ServerTable& table, const char* url) {
  const auto settings = CurrentSettings();
  const std::string key = NormalizeServerUri(url, settings->uidScheme);
  if (key.empty()) return LookUpUrl(table.keylessServers, WithTrailingSlash(TextOrEmpty(url)));
  if (IsKeyBlocked(key)) return nullptr;
  auto server = LookUp(table.servers, key);
  if (server == nullptr || !ServesUrl(*server, url, settings->uidScheme)) return nullptr;
  return server;
}

std::string FindNicknameOfKey(const ServerTable& table, const std::string& key) {
  const std::string wanted = WithTrailingSlash(key);
  const auto entry = std::find_if(table.nicknames.begin(), table.nicknames.end(),
                                  [&](const auto& candidate) { return candidate.second == wanted; });
  return entry != table.nicknames.end() ? entry->first : std::string();
}

std::string FindNicknameOf(const ServerTable& table, const std::shared_ptr<FileServer>& server) {
  const std::string key = server->GetServerKey();
  if (!key.empty()) return FindNicknameOfKey(table, key);
  const auto entry = std::find_if(table.keylessServers.begin(), table.keylessServers.end(),
                                  [&](const auto& candidate) { return candidate.second == server; });
  return entry != table.keylessServers.end() ? entry->first : std::string();
}

// Lopsided on purpose: a caller that names "http" gets a server built for "https" and keeps the secure
// connection, whereas one that names "https" never gets one built for "http".
bool ServesUrl(FileServer& server, const std::string& url, const std::string& uidScheme) {
  const std::string scheme = du::GetURIPart(url, du::URIPart::Scheme);
  return scheme == "http" || scheme == uidScheme ||
         scheme == du::GetURIPart(server.GetServerURL(), du::URIPart::Scheme);
}

std::shared_ptr<FileServer> FindServerByNickname(const std::string& nickname) {
  return FindServerByNickname(*TheManagerState().table(), nickname);
}

std::shared_ptr<FileServer> FindServerByKey(const std::string& text) {
  return FindServerByKey(*TheManagerState().table(), text);
}

std::shared_ptr<FileServer> FindServerByUrl(const char* url) {
  return FindServerByUrl(*TheManagerState().table(), url);
}

}  // namespace lxservices::cms_interface
