// The head of a request and its path.
#include "fuzz/support/input.h"
#include "simulator/wire/request_head.h"
#include "simulator/wire/resource_path.h"
#include "simulator/wire/uri.h"

using namespace vantry_sim;

namespace {

void ReadPath(std::string_view path) {
  std::vector<std::string> segments;
  while (!path.empty()) {
    const auto segment = PercentDecode(vtdirect_fuzz::TakePart(path, '/'));
    if (!segment) return;
    segments.push_back(*segment);
  }
  (void)ParseResourcePath(segments);
}

// The end of a head is found where it is, in however many pieces it comes.
void FindEnd(std::string_view bytes) {
  const HeadEnd whole = FindHeadEnd(bytes);
  HeadEnd piecewise;
  for (std::size_t size = 1; size <= bytes.size() && !piecewise.known; ++size) {
    piecewise = FindHeadEnd(bytes.substr(0, size), size - 1);
  }
  vtdirect_fuzz::Require(whole.known == piecewise.known && whole.size == piecewise.size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  ReadPath(SplitTarget(bytes).path);
  FindEnd(bytes.substr(0, 512));
  const RequestHead head = ReadRequestHead(bytes);
  ReadPath(SplitTarget(head.target).path);
  for (const auto& header : head.headers) vtdirect_fuzz::Look(head.Header(header.first));
  return 0;
}
