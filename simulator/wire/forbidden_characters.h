#pragma once

#include <string>
#include <string_view>

namespace vantry_sim {

/// The name with each of the ten characters that no file name may hold, `| \ / < > : " ? * %`, as "%" and two
/// lower-case hexadecimal digits. Every other byte stays.
std::string EscapeForbidden(std::string_view name);

/// Undoes EscapeForbidden; any other "%" stays as it is.
std::string UnescapeForbidden(std::string_view name);

}  // namespace vantry_sim
