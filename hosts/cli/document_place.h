#pragma once

#include <optional>
#include <string>

#include "hosts/cli/address.h"

namespace vtdirect_cli {

/// Whether the document that a path was resolved to stands where the path says.
///
/// The library finds documents by their names: when only one document of the server has the name, that one is
/// found, in whichever folder the path looks for it. What is only read may come from there; what is changed
/// must not. Makes requests.
/// @param address  as it was given, with the document's name
/// @param uid      what it was resolved to
/// @return a failure that tells where the document stands; nothing for an address by id, and where the server
///         shows no path of the document
[[nodiscard]] std::optional<Failure> RefusalOfAnotherPlace(const std::string& address, AddressKind kind,
                                                           const std::string& uid);

}  // namespace vtdirect_cli
