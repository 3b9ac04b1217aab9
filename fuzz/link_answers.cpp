// What tells whether a translation was linked to its source, or marked as published.
#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"
#include "fuzz/support/scratch_directory.h"
#include "translation/xliff_link.h"
#include "translation/xliff_publishing.h"

using namespace lxservices::cms_interface::vantry;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  const auto& scratch = vtdirect_fuzz::Scratch();
  auto operation = vtdirect_fuzz::NewOperation(true);
  {
    const vtdirect_fuzz::ByteServer server(bytes);
    (void)LinkXliffDocument(operation, "D1001", "D1031");
  }
  const vtdirect_fuzz::ByteServer server(bytes);
  (void)MarkPublished(operation, "D1031");
  scratch.RequireNothingLeft();
  return 0;
}
