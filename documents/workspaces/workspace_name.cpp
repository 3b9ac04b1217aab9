#include "documents/workspaces/workspace_name.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace lxservices::cms_interface::vantry {
namespace {

constexpr std::uint32_t modulus = 100000000;
constexpr std::size_t stateSize = 55;

using GeneratorState = std::array<std::uint32_t, stateSize>;

GeneratorState SeedState(std::uint32_t seconds) {
  GeneratorState state{};
  state[0] = seconds % modulus;
  for (std::size_t index = 1; index < stateSize; ++index) {
    state[index] = (state[index - 1] * 31 + 1) % modulus;
  }
  return state;
}

// The next number of the lagged additive generator, which also takes its place in the state.
std::uint32_t Draw(GeneratorState& state, std::size_t index) {
  const std::uint32_t sum = state[(index + 54) % stateSize] + state[(index + 23) % stateSize];
  return state[index] = sum % modulus;
}

}  // namespace

std::string MakeWorkspaceName(std::string_view prefix, std::uint32_t seconds) {
  constexpr std::string_view digits = "0123456789abcdef";
  GeneratorState state = SeedState(seconds);
  const std::uint32_t high = Draw(state, 1);
  const std::uint32_t low = Draw(state, 2);
  const std::uint32_t value = (high << 16) | (low & 0xffff);
  std::string name(prefix);
  for (int shift = 28; shift >= 0; shift -= 4) name += digits[(value >> shift) & 15];
  return name;
}

}  // namespace lxservices::cms_interface::vantry
