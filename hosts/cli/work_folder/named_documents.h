#pragma once

#include <optional>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/program/host.h"

/// What a command does beside its own work when its ADDRESS is the name of a file of a work folder: such a name
/// stands for the document, and who types it may mean the file.
namespace vtdirect_cli {

/// Why a command must not be run on files of a work folder that its ADDRESS names: it would leave out, or work
/// against, what is in the file. Reads files; makes no request.
[[nodiscard]] std::optional<Failure> RefusalOfWorkFiles(const CommandRow& command,
                                                        const Arguments& arguments);

/// After a check-in that was asked for by the names of files: keeps each file as the version that its document is
/// now, if the file has the bytes of that. Tells of the others. Makes requests for such names alone.
void KeepCheckedIn(Host& host, const CommandRow& command, const Arguments& arguments);

}  // namespace vtdirect_cli
