#pragma once

#include <optional>
#include <string>

#include "hosts/cli/failures/failure.h"

namespace vtdirect_cli {

/// Why a working copy must not be checked in: a program has written to it in a mount, and the server does not have that
/// yet. The new iteration would be without it, and it could be stored nowhere after that. Makes no request.
/// @param address  as it was given
/// @param done     what is not done: "checked in", "sent"
[[nodiscard]] std::optional<Failure> RefusalOfUnstored(const std::string& address,
                                                       const std::string& workingCopy, const char* done);

}  // namespace vtdirect_cli
