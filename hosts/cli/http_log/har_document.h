#pragma once

#include <string>

#include "hosts/cli/http_log/http_log.h"
#include "hosts/cli/http_log/redaction.h"

namespace vtdirect_cli {

/// The exchanges in the form HAR 1.2, which the developer tools of browsers read, without secrets. Bodies are
/// shown if they are JSON or tell of a service ($metadata), up to the bound of the log; of all others the length.
/// @param known  secrets that may turn up anywhere; those of the exchanges are added
[[nodiscard]] std::string HarDocument(const SeenExchanges& seen, KnownSecrets known);

/// These secrets and those of the exchanges, for a text that may repeat what was sent.
[[nodiscard]] KnownSecrets WithSecretsOf(const SeenExchanges& seen, KnownSecrets known);

/// Every secret that the program was given by the environment.
[[nodiscard]] KnownSecrets SecretsOfEnvironment();

}  // namespace vtdirect_cli
