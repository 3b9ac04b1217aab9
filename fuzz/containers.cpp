#include "browsing/containers.h"

#include "browsing/folder_ids.h"
#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using vtdirect_fuzz::ByteServer;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  const char* const type = "ZVK.DataAdmin.ProductContainer";
  auto operation = vtdirect_fuzz::NewOperation(true);
  {
    const ByteServer server(bytes);
    (void)FindContainerId(operation, "Bikes", type);
  }
  {
    const ByteServer server(bytes);
    (void)ListContainers(operation, type,
                         [](const DirEntryInfoExt& entry) { vtdirect_fuzz::Look(entry.name); });
  }
  const ByteServer server(bytes);
  (void)FindFolderIdOData(operation, "C1", "Parts/Frames");
  return 0;
}
