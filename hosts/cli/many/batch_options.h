#pragma once

#include "hosts/cli/commands/command.h"
#include "hosts/cli/many/batch.h"

namespace vtdirect_cli {

/// Whether a command was asked for several objects: by several addresses, by a list or by a pattern.
[[nodiscard]] bool IsForMany(const Arguments& arguments);

/// The options of a command that reads several objects: those of lists, "parallel" and "stop-on-error".
[[nodiscard]] std::vector<OptionRow> ReadingManyOptions();

/// The options of a command that changes several objects: those of lists, "stop-on-error" and
/// "dry-run".
[[nodiscard]] std::vector<OptionRow> ChangingManyOptions();

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
[[nodiscard]] ExitCode ChangeEach(Host& host, const Arguments& arguments, WorkOnOne changeOne);

}  // namespace vtdirect_cli
