// The header lines of a request: parts of them come from servers, and none of them may become two.
#include "platform_default/header_lines.h"

#include "fuzz/support/input.h"

using namespace vtdirect::platform;
using vtdirect_fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = vtdirect_fuzz::TextOf(data, size);
  std::vector<std::string_view> lines;
  if (!AppendHeaderLines(text, &lines)) return 0;
  for (const std::string_view line : lines) {
    Require(line.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos);
    Require(line.find(':') != std::string_view::npos && line.find(':') > 0);
    Require(!HasHeaderName(line, "content-length") && !HasHeaderName(line, "HOST"));
  }
  (void)AcceptsJsonOrXml(lines);
  (void)ContainsHeader(lines, "accept");
  return 0;
}
