#include "connection/csrf_nonce.h"
#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"

using namespace lxservices::cms_interface::vantry;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  {
    const vtdirect_fuzz::ByteServer server(bytes);
    const auto operation = vtdirect_fuzz::NewOperation(true);
    (void)FetchRestCsrf(operation.http());
  }
  const vtdirect_fuzz::ByteServer server(bytes);
  const auto operation = vtdirect_fuzz::NewOperation(true);
  (void)FetchODataCsrf(operation.http());
  return 0;
}
