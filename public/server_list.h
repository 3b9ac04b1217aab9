#pragma once

#include <memory>
#include <string>

#include "server/file_server.h"

/// Changes to the server table. None of them makes a request. Each builds a table beside the one that is in
/// force, without a lock, since making a server calls the platform, and then replaces that one; when another
/// thread has been faster, it builds again from what is in force then.
namespace lxservices::cms_interface {

/// Enters a server under a nickname, making the server object unless there is one of that key.
std::shared_ptr<FileServer> AddServer(const std::string& nickname, const std::string& url);

/// Enters a server that the host never listed, under a nickname made from its host name. A server that
/// another thread has entered for this URL meanwhile is taken as it is.
std::shared_ptr<FileServer> AddServerWithDerivedNickname(const std::string& url);

}  // namespace lxservices::cms_interface
