#include "simulator/wire/random_text.h"

#include <array>
#include <cstdio>
#include <random>

namespace vantry_sim {

std::string RandomHexadecimal() {
  std::random_device device;
  std::string text;
  for (int i = 0; i < 4; ++i) {
    std::array<char, 9> part{};
    std::snprintf(part.data(), part.size(), "%08x", device());
    text += part.data();
  }
  return text;
}

}  // namespace vantry_sim
