#pragma once

#include <string>

#include "connection/server_context.h"

/// The authoring application that documents are stored with, and its version.
namespace lxservices::cms_interface::vantry {

/// The configured authoring application, or "MERIDOX". No request.
[[nodiscard]] std::string AuthoringApplicationOrDefault(const ServerContext& server);

/// The version negotiated with the server, or "310". No request.
[[nodiscard]] std::string AuthAppVersionOrDefault(const ServerContext& server);

/// Settles the version of a server once: what registration gives, else the configured one, else "310". A
/// failed registration counts as answered. At most one POST in the life of the connection, on this thread; of
/// operations that begin on several threads before there is an answer each sends one.
void EnsureAuthAppVersion(ServerContext& server);

/// Registers a version with the server: one POST.
/// @param version  a number in text form
/// @return the version when the answer is exactly 204, else the empty text
[[nodiscard]] std::string RegisterAuthAppVersion(ServerContext& server, const std::string& version);

}  // namespace lxservices::cms_interface::vantry
