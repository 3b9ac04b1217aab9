#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/servers/server_list.h"

namespace vtdirect_cli {

/// How the servers are reached and how the user is known to them over TLS and Kerberos, from the
/// configuration file and the command line, which goes before it.
struct ServerAccess {
  const Configuration& configuration;
  ServerSettings commandLine;
  std::vector<std::string> listed;  ///< URLs of all servers that the user has named
  std::vector<std::string> used;    ///< URLs of those that the command works with
  /// Asked for the passphrase of a locked key.
  std::function<std::optional<std::string>(const std::string& url, const std::string& keyFile)> passphrase;
};

/// Tells the transport. A proxy and trusted certificates count for the whole process, so they are those of
/// the servers that the command works with; certificates of the user's own and Kerberos go by server, and to
/// none that the user has not named. Makes no request.
/// @return a failure for a file that can't be read, and for servers of one command that want different ones
[[nodiscard]] std::optional<Failure> ApplyServerAccess(const ServerAccess& access);

}  // namespace vtdirect_cli
