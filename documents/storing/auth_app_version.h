#pragma once

#include <memory>
#include <string>

#include "connection/vt_connection.h"

/// The authoring application that documents are stored with, and its version.
namespace lxservices::cms_interface::vantry {

/// The configured authoring application, or "MERIDOX". No request.
[[nodiscard]] std::string AuthoringApplicationOrDefault();

/// The connection's negotiated version, or "310". No request.
[[nodiscard]] std::string AuthAppVersionOrDefault(const VtConnection& connection);

/// Settles the version of a connection once: what registration gives, else the configured one, else "310". A
/// failed registration counts as answered. At most one POST in the life of the connection, on this thread.
void EnsureAuthAppVersion(const std::shared_ptr<VtConnection>& connection);

/// Registers a version with the server: one POST.
/// @param version  a number in text form
/// @return the version when the answer is exactly 204, else the empty text
[[nodiscard]] std::string RegisterAuthAppVersion(const std::shared_ptr<VtConnection>& connection,
                                                 const std::string& version);

}  // namespace lxservices::cms_interface::vantry
