#pragma once

#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/commands/command.h"

namespace vtdirect_cli {

/// Checks a working copy in, or throws it away, and prints the UID to go on with: what checkin and undo have
/// in common.
/// @param dryRun  only say that it could be done
[[nodiscard]] ExitCode EndCheckout(Host& host, const std::string& address, CheckoutEnd end, bool dryRun);

/// Warns of the temporary workspace that a check-in or an undo could not delete, and why.
void WarnOfLeftWorkspace(Host& host);

/// The members of what both print with --json.
[[nodiscard]] std::vector<MemberRow> CheckoutEndMembers();

}  // namespace vtdirect_cli
