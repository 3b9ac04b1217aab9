#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Lines of the program's own state files: fields separated by tabs. A backslash and every control byte are written as
/// "\xHH"; all other bytes are written as they are.
namespace vtdirect_cli {

/// Without a line feed.
[[nodiscard]] std::string LineOfFields(const std::vector<std::string>& fields);

/// @return nothing for a line that LineOfFields would not have written
[[nodiscard]] std::optional<std::vector<std::string>> FieldsOfLine(std::string_view line);

}  // namespace vtdirect_cli
