#pragma once

#include <string_view>

namespace vtdirect_cli {

/// Whether one version comes after another: "B.3" after "B.2", "B.10" after "B.9", "AA.1" after "Z.4". The parts
/// between dots are compared one by one: numbers by their value, other texts by their length and then by their
/// letters. A version with further parts comes after the one that it goes on from.
[[nodiscard]] bool ComesAfter(std::string_view one, std::string_view other);

}  // namespace vtdirect_cli
