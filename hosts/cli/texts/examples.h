#pragma once

#include <string_view>
#include <vector>

namespace vtdirect_cli {

/// The command lines that the help of a command ends with, in an order in which they can be given one after the other.
/// They name documents of the demo repository of vantry-sim, listed as "plm", so that anybody can try them; a test
/// runs them all.
[[nodiscard]] const std::vector<const char*>& ExamplesOf(std::string_view command);

}  // namespace vtdirect_cli
