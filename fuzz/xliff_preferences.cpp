#include "translation/xliff_preferences.h"

#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"
#include "translation/translation_gate.h"
#include "translation/xliff_context.h"

using namespace lxservices::cms_interface::vantry;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  auto operation = vtdirect_fuzz::NewOperation(true);
  {
    const vtdirect_fuzz::ByteServer server(bytes);
    for (const auto& [name, value] : GetXliffPreferences(operation, "D1001", "en-US")) {
      vtdirect_fuzz::Look(name);
      vtdirect_fuzz::Look(value);
    }
  }
  {
    const vtdirect_fuzz::ByteServer server(bytes);
    (void)FindContextByCabinet(operation, "Bikes", "F1", "Product");
  }
  const vtdirect_fuzz::ByteServer server(bytes);
  (void)TranslationGate(operation);
  return 0;
}
