#pragma once

#include <string>

#include "hosts/cli/commands/command.h"

namespace vtdirect_cli {

/// The address of what a local path shows that lies in a mount of vtdirect: of a directory with its closing
/// "/", of a version its UID. A name that is not there yet gets the address that it would have. Makes no
/// request to a server.
/// @return the text itself when it lies in no mount, or is an address
[[nodiscard]] std::string AddressOfMounted(const std::string& text);

/// Whether a local path lies where a mount was that was killed, so that nobody can tell its address. Makes no request.
[[nodiscard]] bool LiesInEndedMount(const std::string& path);

/// The arguments with the address in place of each local path in a mount, so that every command takes one.
/// Operands that are local files or directories stay.
[[nodiscard]] Arguments WithMountedAddresses(const CommandRow& command, Arguments arguments);

/// After a command that has changed documents: lets the mounts in which these local paths lie ask the server for them
/// anew, and waits for that, so that a look at such a file shows what the command has done.
/// @param arguments  as they were typed, with the local paths
void AskMountsAnew(const CommandRow& command, const Arguments& arguments);

}  // namespace vtdirect_cli
