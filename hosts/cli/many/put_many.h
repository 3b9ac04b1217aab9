#pragma once

#include "hosts/cli/commands/command.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// Stores one file.
using PutOneFile = ExitCode (*)(Host& host, const Arguments& arguments);

/// Whether several files are to be stored: by several operands, by a pattern, by a list or as a directory.
[[nodiscard]] bool PutsMany(const Arguments& arguments);

/// Stores several files in one folder, one after the other, each by its own call of the function. What would be
/// ambiguous is refused before anything is sent: an address that is no folder's, two files of one name, and options
/// that belong to one document. With --recursive it is the files of a directory, each in the folder of the same path
/// below the one at the address; see FindPutPlaces. Makes requests.
[[nodiscard]] ExitCode PutMany(Host& host, const Arguments& arguments, PutOneFile putOne);

}  // namespace vtdirect_cli
