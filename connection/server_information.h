#pragma once

#include <string>

#include "base/status.h"
#include "connection/http_connection.h"
#include "connection/server_version.h"

namespace lxservices::cms_interface::vantry {

/// What a server tells about itself.
struct ServerInfo {
  ServerVersion version;
  std::string codebaseUrl;  ///< the address that the server calls its own, without any "/" at its end
};

/// Reads the gateway's information document: one GET on this thread, through a temporary file.
///
/// A document without a version key reads as version 0.0 F000 and is no failure here. One of more than 64 KiB
/// is a broken answer.
/// @return Ok, or ConnectionFailed, traced, when the answer is not exactly 200
Status GetServerInfo(HttpConnection& connection, ServerInfo& info);

/// What it means that a server has no information document, or one without a version key.
[[nodiscard]] du::http::FailureReport ForeignServer();

/// GetServerInfo for the version alone.
Status GetServerVersion(HttpConnection& connection, ServerVersion& version);

}  // namespace lxservices::cms_interface::vantry
