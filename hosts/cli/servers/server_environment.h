#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hosts/cli/servers/server_list.h"

namespace vtdirect_cli {

/// Names and values of variables, in any order.
using Variables = std::vector<std::pair<std::string, std::string>>;

/// The variables of this process that list servers.
[[nodiscard]] Variables ServerVariables();

/// Adds the servers of the environment: VTDIRECT_SERVER_<NICK> is the URL of one, and
/// VTDIRECT_SERVER_<NICK>__<KEY> one of its settings, under the key of the configuration file in upper or lower
/// case. The nickname is taken as it is written, up to the first "__". An empty value counts as none.
///
/// What the environment says goes before what the configuration says already. A nickname that gets another
/// scheme, host or port takes none of the settings along that the configuration has for it.
/// @return the configuration with them, or what is wrong with a variable
[[nodiscard]] Result<Configuration> WithServersOfEnvironment(Configuration configuration,
                                                             const Variables& variables);

}  // namespace vtdirect_cli
