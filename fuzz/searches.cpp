// Every search by a name or a number, on the newest and on the oldest generation of servers.
#include "browsing/cad_name_search.h"
#include "browsing/document_search.h"
#include "browsing/object_query.h"
#include "browsing/vantry_lookup.h"
#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using vtdirect_fuzz::ByteServer;

namespace {

void SearchByOData(std::string_view bytes) {
  auto operation = vtdirect_fuzz::NewOperation(true);
  for (const auto search : {SearchCadDocuments, SearchDynamicDocumentsV2, SearchDynamicDocumentsV1}) {
    const ByteServer server(bytes);
    (void)search(operation, "fork.lxz");
  }
  const ByteServer server(bytes);
  (void)SearchFolderByCadName(operation, "fork.lxz", "Containers('C1')/Folders('F1')");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  SearchByOData(bytes);
  for (const bool services : {false, true}) {
    auto operation = vtdirect_fuzz::NewOperation(services);
    {
      const ByteServer server(bytes);
      (void)FindLatestIdByCadName(operation, "fork.lxz");
    }
    const ByteServer server(bytes);
    (void)FindDocumentByCadName(operation, "fork.lxz");
    (void)FindLatestDocumentByNumber(operation, "0000001001", "");
    (void)QueryObjects(operation, "zvk.Document", "number", "CADName eq 'fork.lxz'");
  }
  return 0;
}
