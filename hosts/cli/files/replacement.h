#pragma once

#include <optional>
#include <string>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/files/target_file.h"

namespace vtdirect_cli {

/// Why the file at a target must not be replaced: it is write-protected, it is a file of a work folder, it was never
/// saved by this program, or somebody has changed it since. Nothing for a target where no file is, and for one that
/// has the bytes that are recorded of it (see FetchRecords). Reads the file; makes no request.
/// @param force  the user takes the loss of what is there, which lifts all but the write protection
[[nodiscard]] std::optional<Failure> RefusalOfReplacement(const Target& target, bool force);

/// Why the file at a target must not be replaced by the content that is about to be fetched: its bytes are in a
/// working copy, which goes with all that is in it when somebody undoes its checkout, and something else is
/// fetched. Nothing for a file of which no such thing is recorded. Makes no request.
/// @param fetched  UID of what is fetched: the working copy's when it is one
[[nodiscard]] std::optional<Failure> RefusalToReplaceCopy(const Target& target, bool force,
                                                          const std::string& fetched);

/// Why the file at a target must not be replaced by the content that has come: its bytes were those of a working copy,
/// and the working copy has other ones by now. Nothing for a file of which no such thing is recorded. Makes no request.
/// @param sha256  of what has come
[[nodiscard]] std::optional<Failure> RefusalToLoseContent(const Target& target, bool force,
                                                          const std::string& sha256);

}  // namespace vtdirect_cli
