#pragma once

#include <memory>
#include <string>

#include "public/manager_state.h"
#include "server/file_server.h"

/// Look-ups in the server table. None of them makes a request. A server that a live session has written off
/// is not found by any of them.
namespace lxservices::cms_interface {

/// Finds the server of a nickname; empty for none.
[[nodiscard]] std::shared_ptr<FileServer> FindServerByNickname(const ServerTable& table,
                                                               const std::string& nickname);

/// Finds the server of a key, which may lack the closing "/"; nothing else is normalised.
[[nodiscard]] std::shared_ptr<FileServer> FindServerByKey(const ServerTable& table, const std::string& text);

/// Finds the server of a URL. "http" and the UID scheme find any server of that address, "https" only one
/// that was built for "https".
[[nodiscard]] std::shared_ptr<FileServer> FindServerByUrl(const ServerTable& table, const char* url);

/// The first nickname, in nickname order, of a key; the empty text for none. Blocked servers count.
[[nodiscard]] std::string FindNicknameOfKey(const ServerTable& table, const std::string& key);

/// The first nickname of a server, one without a key included; the empty text for none.
[[nodiscard]] std::string FindNicknameOf(const ServerTable& table, const std::shared_ptr<FileServer>& server);

/// Whether a server object serves a URL of its key: the rule of FindServerByUrl.
[[nodiscard]] bool ServesUrl(FileServer& server, const std::string& url, const std::string& uidScheme);

/// The same look-ups in the table of now.
[[nodiscard]] std::shared_ptr<FileServer> FindServerByNickname(const std::string& nickname);
[[nodiscard]] std::shared_ptr<FileServer> FindServerByKey(const std::string& text);
[[nodiscard]] std::shared_ptr<FileServer> FindServerByUrl(const char* url);

}  // namespace lxservices::cms_interface
