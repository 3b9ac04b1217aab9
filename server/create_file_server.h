#pragma once

#include <memory>
#include <string>

#include "connection/http_connection.h"
#include "server/file_server.h"

namespace lxservices::cms_interface {

/// Makes a server object for a URL and enters it nowhere. Sends nothing.
/// @param auth  called with the URL when the server demands authentication
[[nodiscard]] std::shared_ptr<FileServer> CreateFileServer(const char* url, vantry::AuthFunction auth);

/// CreateFileServer with the server's key given.
/// @param key  empty for a URL of a form that gives none; such a server fails at its first request
[[nodiscard]] std::shared_ptr<FileServer> CreateFileServer(const char* url, const std::string& key,
                                                           vantry::AuthFunction auth);

}  // namespace lxservices::cms_interface
