#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "hosts/cli/failures/result.h"

namespace vtdirect_cli {

/// What the configuration file says of one server beside its URL. An empty text means that nothing is said.
struct ServerSettings {
  std::string clientCertificate;  ///< file of the certificate that the server is shown
  std::string clientKey;          ///< file of its key; empty when the certificate's file holds it
  std::string authorityFile;      ///< trusted certificates in place of the system's
  std::string proxy;              ///< URL of the proxy; "none" for the direct way
  std::string credentialHelper;   ///< command line of the credential helper
  std::string loginAlsoFor;       ///< nicknames of servers that may have its login too, with commas between
  std::string httpAddresses;      ///< what becomes of http addresses that it names: refuse, allow, upgrade
  std::optional<bool> negotiate;  ///< whether Kerberos is used
  std::optional<long> maxTime;    ///< longest time of a command, in seconds
};

/// Longest time that any limit of the command line or the configuration file may name.
inline constexpr long longestSeconds = 24L * 60 * 60;

/// Reads a number of seconds, from 1 to `longestSeconds`; nothing for any other text.
[[nodiscard]] std::optional<long> ReadSeconds(std::string_view text);

/// What is wrong with the URL of a proxy, or nothing. It holds no user name and no password: it shows in
/// messages and process lists.
[[nodiscard]] std::optional<std::string> ProxyFault(std::string_view proxy);

/// Adds one "KEY = VALUE" of a server's section, apart from its URL.
/// @return the settings with it, or what is wrong with it
[[nodiscard]] Result<ServerSettings> WithServerSetting(ServerSettings settings, const std::string& key,
                                                       const std::string& value);

/// Two descriptions of one server in one.
struct MergedSettings {
  ServerSettings settings;
  std::string contestedKey;  ///< of which both say something else; empty without one
};

/// Puts what `other` says wherever `settings` says nothing.
[[nodiscard]] MergedSettings MergeSettings(ServerSettings settings, const ServerSettings& other);

}  // namespace vtdirect_cli
