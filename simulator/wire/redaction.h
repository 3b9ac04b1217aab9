#pragma once

#include <string>
#include <string_view>

namespace vantry_sim {

/// What is shown in place of a value that may be secret.
inline constexpr std::string_view hiddenText = "(hidden)";

// Everything of a request that is kept or written down goes through these. They know what may be shown, and
// hide all else: a header, a parameter or a member that nobody has thought of cannot give a secret away.

/// The value of a header, or hiddenText.
std::string ShownHeader(std::string_view name, std::string_view value);

/// A request target without the values of unknown query parameters, without the token of an upload's address,
/// and without what comes before an "@" in the host of an absolute one.
std::string ShownTarget(std::string_view target);

/// A JSON body without the values of unknown members. @return empty for a body that is no JSON, and for any
/// other content type
std::string ShownBody(std::string_view contentType, std::string_view body);

}  // namespace vantry_sim
