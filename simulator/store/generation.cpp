#include "simulator/store/generation.h"

#include <array>
#include <utility>

namespace vantry_sim {
namespace {

constexpr std::array<std::pair<Generation, std::string_view>, 4> words{{
    {Generation::Gateway, "gateway"},
    {Generation::Schema1, "schema1"},
    {Generation::Schema4, "schema4"},
    {Generation::Schema5, "schema5"},
}};

}  // namespace

std::optional<Generation> GenerationOf(std::string_view word) {
  for (const auto& [generation, name] : words) {
    if (name == word) return generation;
  }
  return std::nullopt;
}

std::string_view WordOf(Generation generation) {
  for (const auto& [value, name] : words) {
    if (value == generation) return name;
  }
  return {};
}

}  // namespace vantry_sim
