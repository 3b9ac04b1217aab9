#pragma once

#include <string_view>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/result.h"

namespace vtdirect_cli {

/// The options of a command that takes addresses from a list: "from" and "null".
[[nodiscard]] std::vector<OptionRow> ListOptions();
/// The same of a command that takes local files from one.
[[nodiscard]] std::vector<OptionRow> FileListOptions();

/// The addresses of a list, in their order: one a line, or one in front of each zero byte. What is empty is left
/// out, and so is the carriage return that ends a line on other systems.
[[nodiscard]] std::vector<std::string> AddressesOfList(std::string_view text, bool endWithZero);

/// The arguments with what the list that --from names holds after what was given: addresses, or the files of a
/// command that takes several of them. "-" is standard input. Makes no request.
/// @return a failure for a list that can't be read
[[nodiscard]] Result<Arguments> WithListedAddresses(const CommandRow& command, Arguments arguments);

}  // namespace vtdirect_cli
