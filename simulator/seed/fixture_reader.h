#pragma once

#include <optional>
#include <string>
#include <vector>

#include "simulator/seed/fixture.h"
#include "simulator/seed/fixture_contents.h"
#include "simulator/seed/fixture_tree.h"

namespace vantry_sim {

/// Reads a state out of the values of a file. All references are found and all ids made when it is returned.
/// @param[out] problems what is wrong with it, when nothing is returned
std::optional<Fixture> ReadFixture(JsonValue root, const FixtureSources& sources,
                                   std::vector<FixtureProblem>& problems);

/// Reads a state file, YAML or JSON by its name. Files that it names begin in its own directory.
std::optional<Fixture> ReadFixtureFile(const std::filesystem::path& file,
                                       std::vector<FixtureProblem>& problems);

/// The problems as lines "FILE:LINE: REASON".
std::string TextOf(const std::vector<FixtureProblem>& problems, const std::string& file);

}  // namespace vantry_sim
