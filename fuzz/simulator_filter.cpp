// A filter, which becomes SQL: no byte of a client's text may get into the statement itself.
#include <array>

#include "fuzz/support/input.h"
#include "simulator/wire/object_filter.h"
#include "simulator/wire/odata_filter.h"

using namespace vantry_sim;
using vtdirect_fuzz::Require;

namespace {

constexpr std::array properties{ODataProperty{"Name", "t.name"}, ODataProperty{"Number", "t.number"},
                                ODataProperty{"Location", ""}};
constexpr ODataEntity entity{properties, "t.id", "Name"};

/// Takes the first of these words off the front of the text.
bool TakeWord(std::string_view& text) {
  for (const std::string_view word : {"t.name", "t.number", " = ?", " AND ", " OR ", "(", ")"}) {
    if (!text.starts_with(word)) continue;
    text.remove_prefix(word.size());
    return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = vtdirect_fuzz::TextOf(data, size);
  (void)ParseObjectFilter(text);
  ODataProblem problem;
  const auto condition = ParseODataFilter(text, entity, problem);
  if (!condition) {
    Require(problem.status == 400 || problem.status == 501);
    return 0;
  }
  std::string_view sql = condition->text();
  while (!sql.empty()) Require(TakeWord(sql));
  return 0;
}
