#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "hosts/cli/exit_code.h"

namespace vtdirect_cli {

/// Nickname to server URL.
using ServerMap = std::map<std::string, std::string>;

/// What is wrong with a nickname, or nothing. A nickname ends at the first "/" of an address, so it holds
/// none.
[[nodiscard]] std::optional<std::string> NicknameFault(std::string_view nickname);

/// What is wrong with a server URL, or nothing. User names and passwords are refused in a URL: it shows in
/// process lists, shell histories and messages.
[[nodiscard]] std::optional<std::string> ServerUrlFault(std::string_view url);

/// Adds one "NICK=URL" of the command line; a nickname that is there already gets the new URL.
/// @return what is wrong with it, or nothing
[[nodiscard]] std::optional<Failure> AddServerArgument(std::string_view argument, ServerMap& servers);

/// Reads the text of a configuration file.
///
/// The form: a line "[servers]", then lines "NICK = URL". Blanks around both count for nothing. Empty lines
/// and lines that begin with "#" or ";" are passed over. Any other line, any other section and a nickname
/// that comes twice are faults.
/// @param name  of the file, for the message
/// @return the first fault, with file and line, or nothing
[[nodiscard]] std::optional<Failure> ReadConfiguration(std::string_view text, const std::string& name,
                                                       ServerMap& servers);

/// The configuration file that is read when none is named: "$XDG_CONFIG_HOME/vtdirect/config", else
/// "~/.config/vtdirect/config"; empty when neither directory is known.
/// @param configHome  value of XDG_CONFIG_HOME; counts only when it is an absolute path
/// @param home        value of HOME
[[nodiscard]] std::string DefaultConfigurationPath(const std::string& configHome, const std::string& home);

/// Reads the file and then its text.
/// @param required  whether a missing file is a fault
[[nodiscard]] std::optional<Failure> LoadConfiguration(const std::string& path, bool required,
                                                       ServerMap& servers);

}  // namespace vtdirect_cli
