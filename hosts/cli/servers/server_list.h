#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/cli/failures/result.h"
#include "hosts/cli/servers/server_settings.h"

namespace vtdirect_cli {

/// Nickname to server URL.
using ServerMap = std::map<std::string, std::string>;

/// What is wrong with a nickname, or nothing. A nickname ends at the first "/" of an address, so it holds
/// none.
[[nodiscard]] std::optional<std::string> NicknameFault(std::string_view nickname);

/// What is wrong with a server URL, or nothing. User names and passwords are refused in a URL: it shows in
/// process lists, shell histories and messages.
[[nodiscard]] std::optional<std::string> ServerUrlFault(std::string_view url);

/// The servers that a user has listed.
struct Configuration {
  ServerMap servers;
  /// By nickname, for those of which more is said than the URL.
  std::map<std::string, ServerSettings> settings;
};

/// Gives a nickname a URL, new or in place of the one that it has. What the configuration says of the nickname
/// stays with the scheme, host and port that it was said of.
/// @return the configuration with it, or what is wrong with it
[[nodiscard]] Result<Configuration> WithServerUrl(Configuration configuration, const std::string& nickname,
                                                  const std::string& url);

/// Adds one "NICK=URL" of the command line; a nickname that is there already gets the new URL. What the
/// configuration file says of that nickname stays with the scheme, host and port that it was said of.
/// @return the configuration with it, or what is wrong with it
[[nodiscard]] Result<Configuration> WithServerArgument(std::string_view argument,
                                                       Configuration configuration);

/// Reads the text of a configuration file.
///
/// The form: a line "[servers]", then lines "NICK = URL"; and for a server of which more is to be said a line
/// "[server NICK]", then lines "KEY = VALUE", of which "url" may be left out when the server is listed
/// otherwise. Blanks around all of them count for nothing. Empty lines and lines that begin with "#" or ";"
/// are passed over. Any other line, any other section and what comes twice are faults.
/// @param name  of the file, for the message
/// @return the configuration, or the first fault with file and line
[[nodiscard]] Result<Configuration> ReadConfiguration(std::string_view text, const std::string& name);

/// The configuration file that is read when neither --config nor VTDIRECT_CONFIG names one:
/// "$XDG_CONFIG_HOME/vtdirect/config", else
/// "~/.config/vtdirect/config"; empty when neither directory is known.
/// @param configHome  value of XDG_CONFIG_HOME; counts only when it is an absolute path
/// @param home        value of HOME
[[nodiscard]] std::string DefaultConfigurationPath(const std::string& configHome, const std::string& home);

/// Reads the file and then its text.
/// @param required  whether a missing file is a fault
[[nodiscard]] Result<Configuration> LoadConfiguration(const std::string& path, bool required);

/// What can't be meant by the list as a whole, or nothing. One host and port under both schemes: the library
/// tells servers by host, port and path, so the address of one would lead to the other, and a password that
/// is meant for https could go out in clear.
[[nodiscard]] std::optional<Failure> ConfigurationFault(const Configuration& configuration);

/// URLs of the servers that may have the token and the password that are meant for the one at this URL: those
/// that its "login_also_for" names.
[[nodiscard]] std::vector<std::string> ServersWithLoginOf(const Configuration& configuration,
                                                          const std::string& url);

/// What is said of the server at this URL: that of every nickname of its scheme, host and port.
[[nodiscard]] ServerSettings SettingsFor(const Configuration& configuration, const std::string& url);

}  // namespace vtdirect_cli
