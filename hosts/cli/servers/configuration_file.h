#pragma once

#include <string>

namespace vtdirect_cli {

/// The configuration file of this run: the one that VTDIRECT_CONFIG names, which is also set from --config, else the
/// usual one. Empty when there is no directory for it.
[[nodiscard]] std::string ConfigurationFile();

/// How to list a server: by the option, or by a line of the file that this run has read.
/// @param entry  "NICK=URL", as far as it is known
[[nodiscard]] std::string HowToListServer(const std::string& entry);

}  // namespace vtdirect_cli
