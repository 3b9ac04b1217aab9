#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// What every target of a fuzzer begins with.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vtdirect_fuzz {

/// The bytes of an input as a text. A view of them.
[[nodiscard]] inline std::string_view TextOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Takes the part before the first of a byte off the front of a text, with that byte; without one, all of it.
[[nodiscard]] inline std::string_view TakePart(std::string_view& rest, char end) {
  const std::size_t at = rest.find(end);
  const std::string_view part = rest.substr(0, at);
  rest.remove_prefix(at == std::string_view::npos ? rest.size() : at + 1);
  return part;
}

/// Ends the program, which the fuzzer takes for a finding.
inline void Require(bool holds) {
  if (!holds) std::abort();
}

/// Looks at every byte of a text, so that one that is not there any more is found.
inline void Look(std::string_view text) {
  volatile unsigned sum = 0;
  for (const char byte : text) sum = sum + static_cast<unsigned char>(byte);
}

}  // namespace vtdirect_fuzz
