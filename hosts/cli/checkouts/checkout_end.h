#pragma once

#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/commands/command.h"

namespace vtdirect_cli {

/// Checks a working copy in, or throws it away, and prints the UID to go on with: what checkin and undo have
/// in common.
/// @param dryRun  only say that it could be done
[[nodiscard]] ExitCode EndCheckout(Host& host, const std::string& address, CheckoutEnd end, bool dryRun);

/// Undoes a checkout that the running command has made, and drops it from what is kept. It is done only once the
/// document says so. Makes requests.
/// @param address  what was checked out
/// @return why it may not have ended, with the state on the server
[[nodiscard]] std::optional<Failure> UndoOwnCheckout(Host& host, const std::string& address,
                                                     const std::string& workingCopy);

/// Warns of the temporary workspace that a check-in or an undo could not delete, and why.
void WarnOfLeftWorkspace(Host& host);

/// The members of what both print with --json.
[[nodiscard]] std::vector<MemberRow> CheckoutEndMembers();

}  // namespace vtdirect_cli
