#pragma once

#include <memory>
#include <string>

#include "server/file_server.h"

/// Look-ups in the server table. None of them makes a request. A server that a live session has written off
/// is not found by any of them.
namespace lxservices::cms_interface {

/// Finds the server of a nickname; empty for none.
[[nodiscard]] std::shared_ptr<FileServer> FindServerByNickname(const std::string& nickname);

/// Finds the server of a key, which may lack the closing "/"; nothing else is normalised.
[[nodiscard]] std::shared_ptr<FileServer> FindServerByKey(const std::string& text);

/// Finds the server of a URL. "http" and the UID scheme find any server of that address, "https" only one
/// that was built for "https".
[[nodiscard]] std::shared_ptr<FileServer> FindServerByUrl(const char* url);

/// The first nickname, in nickname order, of a key; the empty text for none. Blocked servers count.
[[nodiscard]] std::string FindNicknameOfKey(const std::string& key);

/// Enters a server under a nickname, making the server object unless there is one of that key.
std::shared_ptr<FileServer> AddServer(const std::string& nickname, const std::string& url);

/// Enters a server that the host never listed, under a nickname made from its host name.
std::shared_ptr<FileServer> AddServerWithDerivedNickname(const std::string& url);

}  // namespace lxservices::cms_interface
