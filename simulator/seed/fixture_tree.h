#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/wire/json_reader.h"

namespace vantry_sim {

/// What is wrong with a state file, and where.
struct FixtureProblem {
  std::uint32_t line = 0;  ///< counted from 1; 0: no line of its own
  std::string reason;
};

/// "line 12: reason", or the reason alone.
std::string TextOf(const FixtureProblem& problem);

/// Reads YAML, of which JSON is a part, as the same values that JSON has: a plain word or number is kept as
/// it is written, so that 0000100001 stays a text. Aliases are followed, up to the bound of values that JSON
/// has too. Nothing with `problem` set for what is no YAML.
std::optional<JsonDocument> ReadYaml(const std::string& text, FixtureProblem& problem);

/// Reads the file, as JSON when its name ends so and as YAML otherwise. Nothing with `problem` set when it
/// cannot be read.
std::optional<JsonDocument> ReadFixtureTree(const std::filesystem::path& file, FixtureProblem& problem);

/// Whether a text stands for a number in JSON.
bool IsJsonNumber(std::string_view text);

}  // namespace vantry_sim
