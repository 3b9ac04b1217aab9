#pragma once

#include <optional>
#include <string>

#include "hosts/cli/failures/result.h"

namespace vtdirect_cli {

enum class AddressKind { Path, Uid };

/// Which family the address is of.
/// @return a usage failure that tells what is wrong with a text that is of neither
[[nodiscard]] Result<AddressKind> ClassifyAddress(const std::string& address);

/// What a "NICK=URL" would have to be for the server of this address to be found, as far as the address
/// tells.
[[nodiscard]] std::string ServerHint(const std::string& address, AddressKind kind);

/// Whether the server of the address is listed.
/// @return a failure that tells how to list it
[[nodiscard]] std::optional<Failure> RequireListedServer(const std::string& address, AddressKind kind);

/// Whether the address names an object by its id: a UID, or a path of the form "//NICK/?id=ID". It is never
/// a directory.
[[nodiscard]] bool IsById(const std::string& address, AddressKind kind);

/// The address in a form whose path the library can tell: that of a path by id would be the text itself, so
/// it becomes a UID; the empty text when there is no such object. Makes requests for a path by id.
[[nodiscard]] std::string PlacedAddress(const std::string& address, AddressKind kind);

/// The address as a directory's: the library counts a level only when a "/" closes it, and adds none.
[[nodiscard]] std::string WithClosingSlash(const std::string& path);

/// ClassifyAddress and RequireListedServer in one.
/// @return a failure for a malformed address and an unlisted server
[[nodiscard]] Result<AddressKind> RequireAddress(const std::string& address);

/// The file name of the object, escaped as in a path; empty when it can't be found out. Makes requests when
/// the text itself holds no name.
[[nodiscard]] std::string FileNameOf(const std::string& address);

}  // namespace vtdirect_cli
