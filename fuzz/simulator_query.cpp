// A query string: its escapes, and the options of OData in it.
#include "fuzz/support/input.h"
#include "simulator/wire/byte_range.h"
#include "simulator/wire/odata_query.h"
#include "simulator/wire/uri.h"

using namespace vantry_sim;
using vtdirect_fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = vtdirect_fuzz::TextOf(data, size);
  Require(PercentDecode(PercentEncode(text)) == std::string(text) ||
          text.find('\0') != std::string_view::npos);
  (void)PreferredPageSize(text);
  const RangeWish wish = ReadRange(text, 1000);
  if (wish.kind == RangeWish::Kind::Part)
    Require(wish.part.first < 1000 && wish.part.size <= 1000 - wish.part.first);
  const auto parameters = ParseQuery(SplitTarget(text).query);
  if (!parameters) return 0;
  ODataProblem problem;
  if (!ParseODataQuery(*parameters, problem)) Require(problem.status == 400 || problem.status == 501);
  return 0;
}
