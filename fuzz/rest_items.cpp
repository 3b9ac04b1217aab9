// The lists of the REST services, and the contexts that are read from them.
#include "connection/rest_items.h"

#include "browsing/contexts.h"
#include "browsing/folder_ids.h"
#include "browsing/object_query.h"
#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using vtdirect_fuzz::ByteServer;

namespace {

void LookAtContexts(std::string_view bytes) {
  auto operation = vtdirect_fuzz::NewOperation(false);
  const auto look = [](const DirEntryInfoExt& entry) { vtdirect_fuzz::Look(entry.name); };
  {
    const ByteServer server(bytes);
    (void)FindContext(operation, ContextKind::Product, "Bikes");
  }
  const ByteServer server(bytes);
  (void)ListContexts(operation, ContextKind::Library, look, ReadDirFlags::Directories);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  for (const auto form : {RestListForm::Bare, RestListForm::Wrapped}) {
    const ByteServer server(bytes);
    const auto operation = vtdirect_fuzz::NewOperation(false);
    (void)ReadRestItems(operation.http(), "servlet/rest/v1/contexts", form);
  }
  LookAtContexts(bytes);
  auto operation = vtdirect_fuzz::NewOperation(false);
  const ByteServer server(bytes);
  (void)FindFolderIdRest(operation, "OR:zvk.Product:1", "Parts/Frames");
  return 0;
}
