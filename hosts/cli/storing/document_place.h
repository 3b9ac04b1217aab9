#pragma once

#include <optional>
#include <string>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/presence.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/failure.h"
#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/host.h"

/// Whether a document is where a path says.
///
/// The library finds documents by their names: the only one of a name is found in whichever folder the path
/// looks for it, and of several one in the path's context. Another document than the one that was named is
/// neither changed nor, unasked, taken for it.
namespace vtdirect_cli {

/// A failure of the code NotFound that tells where the document is that a path was resolved to, if that is
/// another folder than the path's; one of another code if the server could not tell where it is. Nothing
/// for an address by id, and for a document that is in no folder. Makes requests.
/// @param address  as it was given, with the document's name
/// @param uid      what it was resolved to; empty for nothing
[[nodiscard]] std::optional<Failure> FailureOfAnotherPlace(const std::string& address,
                                                           const std::string& uid);

/// The same for a command that changes something: it says that nothing was changed.
[[nodiscard]] std::optional<Failure> RefusalOfAnotherPlace(const std::string& address,
                                                           const std::string& uid);

/// The option that lets a reading command take the document of a name wherever it is.
[[nodiscard]] OptionRow AnywhereOption();

/// RequireAddress for a command that reads a document: a path must lead to one where it says, unless
/// --anywhere was given. Makes requests for a path.
/// @return which family the address is of, also of one that leads to no document and of a folder's; a failure for
///         a malformed address, an unlisted server, another place, and if the server could not tell
[[nodiscard]] Result<AddressKind> RequirePlacedAddress(Host& host, const Arguments& arguments,
                                                       const std::string& address);

/// The UID of the document that is at a path; empty when none does. Makes requests.
/// @return a failure if the server could not tell
[[nodiscard]] Result<std::string> UidAtPlace(const std::string& path);

/// Whether the folder of a path lists a document of the path's name, for a path that leads to a document of
/// that name in another folder. Reads the folder up to that document. Makes requests.
/// @return NotKnown when the listing failed
[[nodiscard]] Presence PresenceInFolder(const std::string& path);

}  // namespace vtdirect_cli
