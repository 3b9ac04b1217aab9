#pragma once

#include <string>
#include <vector>

#include "hosts/cli/failures/exit_code.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// Gives up files that were written in a mount and wait, and prints a row for each. All are looked for before any
/// goes. Makes no request.
/// @param paths     of their contents, as recover lists them
/// @param isDryRun  whether to say only what would be done
[[nodiscard]] ExitCode DiscardUnstored(Host& host, const std::vector<std::string>& paths, bool isDryRun);

}  // namespace vtdirect_cli
