#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"
#include "translation/xliff_queries.h"

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using vtdirect_fuzz::ByteServer;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  auto operation = vtdirect_fuzz::NewOperation(true);
  {
    const ByteServer server(bytes);
    (void)FindSourceXliff(operation, "D1001");
  }
  {
    const ByteServer server(bytes);
    (void)ReadDocumentLanguage(operation, "D1001");
  }
  const ByteServer server(bytes);
  (void)ListTranslations(operation, "D1001");
  return 0;
}
