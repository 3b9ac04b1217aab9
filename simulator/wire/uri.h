#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantry_sim {

/// A request target in its parts: everything before the first "?", and everything after it.
struct TargetParts {
  std::string_view path;
  std::string_view query;
};
TargetParts SplitTarget(std::string_view target);

/// Decodes "%" escapes. Nothing when a "%" has no two hexadecimal digits after it, or for an escaped zero
/// byte, which no name of this server holds. "+" stays "+".
std::optional<std::string> PercentDecode(std::string_view text);

/// Escapes every byte but letters, digits, "-", ".", "_" and "~".
std::string PercentEncode(std::string_view text);

/// The decoded name and value pairs of a query, in order. A "$" in front of a name is part of it. Nothing
/// when an escape is broken.
using QueryParameters = std::vector<std::pair<std::string, std::string>>;
std::optional<QueryParameters> ParseQuery(std::string_view query);

}  // namespace vantry_sim
