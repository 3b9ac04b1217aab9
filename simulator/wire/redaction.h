#pragma once

#include <string>
#include <string_view>

namespace vantry_sim {

/// What stands in the place of a value that may be secret.
inline constexpr std::string_view kHidden = "(hidden)";

// Everything of a request that is kept or written down goes through these. They know what may be shown, and
// hide all else: a header, a parameter or a member that nobody has thought of cannot give a secret away.

/// The value of a header, or kHidden.
std::string ShownHeader(std::string_view name, std::string_view value);

/// A request target without the values of unknown query parameters, without the token of an upload's address,
/// and without what stands in front of an "@" in the host of an absolute one.
std::string ShownTarget(std::string_view target);

/// A JSON body without the values of unknown members. @return empty for a body that is no JSON, and for any
/// other content type
std::string ShownBody(std::string_view content_type, std::string_view body);

}  // namespace vantry_sim
