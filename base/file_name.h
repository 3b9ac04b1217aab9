#pragma once

#include <string>
#include <string_view>

/// File names inside VFS paths. Pure functions.
namespace lxservices::cms_interface {

/// Whether a name holds one of the ten characters that cannot be in a VFS path's name: |\/<>:"?*%
[[nodiscard]] bool HoldsForbiddenCharacter(std::string_view name);

/// Writes each forbidden character as "%" and two lower-case hexadecimal digits; every other byte stays.
///
/// "a|b" gives "a%7cb", "50%" gives "50%25".
[[nodiscard]] std::string EscapeFileName(std::string_view name);

/// Decodes what EscapeFileName writes and nothing else; it is no URI decoder.
///
/// "a%7cb" gives "a|b"; "a%20b" and "100%" stay; "%%7c" gives "%|". Digits of either case are read.
[[nodiscard]] std::string UnescapeFileName(std::string_view name);

}  // namespace lxservices::cms_interface
