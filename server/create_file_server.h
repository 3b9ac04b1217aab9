#pragma once

#include <memory>

#include "connection/http_connection.h"
#include "server/file_server.h"

namespace lxservices::cms_interface {

/// Makes a server object for a URL and enters it nowhere. Sends nothing.
/// @param auth  called with the URL when the server demands authentication
[[nodiscard]] std::shared_ptr<FileServer> CreateFileServer(const char* url, vantry::AuthFunction auth);

}  // namespace lxservices::cms_interface
