#pragma once

#include <optional>
#include <string>

#include "hosts/cli/exit_code.h"

/// Whether a document stands where a path says.
///
/// The library finds documents by their names: the only one of a name is found in whichever folder the path
/// looks for it, and of several one in the path's context. What is only read may come from there; what is
/// changed must not.
namespace vtdirect_cli {

/// A failure that tells where the document stands that a path was resolved to, if that is another folder than
/// the path's. Nothing for an address by id, and where the server shows no path of the document. Makes
/// requests.
/// @param address  as it was given, with the document's name
/// @param uid      what it was resolved to; empty for nothing
[[nodiscard]] std::optional<Failure> RefusalOfAnotherPlace(const std::string& address,
                                                           const std::string& uid);

/// The UID of the document that stands at a path; empty when none does. Makes requests.
[[nodiscard]] std::string UidAtPlace(const std::string& path);

}  // namespace vtdirect_cli
