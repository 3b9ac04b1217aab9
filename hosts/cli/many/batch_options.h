#pragma once

#include "hosts/cli/commands/command.h"
#include "hosts/cli/many/batch.h"
#include "hosts/cli/many/subjects_below.h"

namespace vtdirect_cli {

/// Whether a command was asked for several objects: by several addresses, by a list, by a pattern or for what is in
/// a folder.
[[nodiscard]] bool IsForMany(const Arguments& arguments);

/// The options of a command that reads several objects: those of lists, "recursive", "parallel", "retries" and
/// "stop-on-error".
/// @param recursiveHelp  what "recursive" does, in one sentence
[[nodiscard]] std::vector<OptionRow> ReadingManyOptions(
    const char* recursiveHelp = "Take folders too, for all documents in them and below them.");

/// The options of a command that changes several objects: those of lists, "recursive", "stop-on-error" and
/// "dry-run".
[[nodiscard]] std::vector<OptionRow> ChangingManyOptions(OfFolders ofFolders);

/// What these options say.
/// @return a usage failure for what can't be meant
[[nodiscard]] Result<BatchOptions> ReadBatchOptions(const Arguments& arguments);

/// Works on one object of a command.
using WorkOnOne = ExitCode (*)(Host& host, const Arguments& arguments, const std::string& address);

/// Tells of one object whose server can't be used.
using PassOverOne = ExitCode (*)(Host& host, const std::string& address, const Failure& why);

/// Asks for each object that the addresses mean, several at a time, and tells of them in their order. With one
/// address that is no pattern it is a call of the function. Makes requests.
[[nodiscard]] ExitCode ReadEach(Host& host, const Arguments& arguments, Wanted wanted, WorkOnOne readOne,
                                PassOverOne passOver = nullptr);

/// Changes each object that the addresses mean, one after the other. Makes requests.
/// @param ofFolders  what the folders stand for that are named with --recursive
[[nodiscard]] ExitCode ChangeEach(Host& host, const Arguments& arguments, OfFolders ofFolders,
                                  WorkOnOne changeOne);

}  // namespace vtdirect_cli
