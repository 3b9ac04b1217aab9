// The first answer is the list of contexts, in which the context is found, and the second one the folder's.
#include "browsing/gateway_listing.h"

#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"
#include "fuzz/support/scratch_directory.h"

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

namespace {

constexpr std::string_view contexts =
    R"({"items":[{"id":"OR:zvk.Product:1","typeId":"Product","attributes":{"name":"Bikes","organization":"Demo"}}]})";

void Look(const DirEntryInfoExt& entry) {
  vtdirect_fuzz::Look(entry.name);
  if (entry.id != nullptr) vtdirect_fuzz::Look(entry.id);
  if (entry.details != nullptr && entry.details->number != nullptr)
    vtdirect_fuzz::Look(entry.details->number);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto& scratch = vtdirect_fuzz::Scratch();
  auto operation = vtdirect_fuzz::NewOperation(false);
  const ReadDirFlags all{15};
  std::string bytes(contexts);
  bytes += vtdirect_fuzz::answerEnd;
  bytes += vtdirect_fuzz::TextOf(data, size);
  {
    const vtdirect_fuzz::ByteServer server(bytes);
    (void)ListGatewayFolder(operation, {"Bikes", ContextKind::Product, "Parts/Frames"}, Look, all);
  }
  {
    const vtdirect_fuzz::ByteServer server(bytes);
    const DirLister lister = OpenGatewayFolder(operation, {"Bikes", ContextKind::Product, "Parts/Frames"});
    if (lister) vtdirect_fuzz::Require(lister(Look, all) == lister(Look, all));
  }
  scratch.RequireNothingLeft();
  return 0;
}
