#include "simulator/store/generation.h"

#include <array>
#include <utility>

namespace vantry_sim {
namespace {

constexpr std::array<std::pair<Generation, std::string_view>, 4> kWords{{
    {Generation::kGateway, "gateway"},
    {Generation::kSchema1, "schema1"},
    {Generation::kSchema4, "schema4"},
    {Generation::kSchema5, "schema5"},
}};

}  // namespace

std::optional<Generation> GenerationOf(std::string_view word) {
  for (const auto& [generation, name] : kWords) {
    if (name == word) return generation;
  }
  return std::nullopt;
}

std::string_view WordOf(Generation generation) {
  for (const auto& [value, name] : kWords) {
    if (value == generation) return name;
  }
  return {};
}

}  // namespace vantry_sim
