#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "simulator/store/conflict_resolution.h"
#include "simulator/store/document_instruction.h"
#include "simulator/wire/json_reader.h"

using namespace vantry_sim;

namespace {

/// Looks at every value that lies no deeper than stack allows. @return something of each, so that no look is
/// left out
std::size_t Walk(JsonValue value, int depth) {
  std::size_t sum = value.Name().size() + value.Text().size() + value.NumberText().size() + value.Line();
  sum += static_cast<std::size_t>(value.Integer().value_or(0) & 1) + (value.Boolean() ? 1 : 0);
  if (depth == 0) return sum;
  for (const JsonValue child : value) sum += Walk(child, depth - 1);
  return sum;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto document = ReadJson({reinterpret_cast<const char*>(data), size});
  if (!document) return 0;
  volatile std::size_t seen = Walk(document->Root(), 50);
  (void)seen;
  for (const char* member : {"createInstructions", "iterateInstructions", "storeInstructions"}) {
    (void)ReadInstructions(document->Root(), member);
  }
  Resolutions resolutions;
  (void)resolutions.Read(document->Root());
  return 0;
}
