#pragma once

#include <optional>
#include <string>

#include "hosts/cli/exit_code.h"

namespace vtdirect_cli {

enum class AddressKind { Path, Uid };

/// Which family the address is of.
/// @return a usage failure that tells what is wrong with a text that is of neither
[[nodiscard]] std::optional<Failure> ClassifyAddress(const std::string& address, AddressKind& kind);

/// What a "NICK=URL" would have to be for the server of this address to be found, as far as the address
/// tells.
[[nodiscard]] std::string ServerHint(const std::string& address, AddressKind kind);

/// Whether the server of the address is listed.
/// @return a failure that tells how to list it
[[nodiscard]] std::optional<Failure> RequireListedServer(const std::string& address, AddressKind kind);

/// The file name of the object, escaped as in a path; empty when it can't be found out. Makes requests when
/// the text itself holds no name.
[[nodiscard]] std::string FileNameOf(const std::string& address);

}  // namespace vtdirect_cli
