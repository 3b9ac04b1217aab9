// One document, the versions of one, and what a search for a number gives.
#include "browsing/workspace_listing.h"
#include "documents/reading/document_reads.h"
#include "documents/workspaces/workspaces.h"
#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using vtdirect_fuzz::ByteServer;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  auto operation = vtdirect_fuzz::NewOperation(true);
  {
    const ByteServer server(bytes);
    (void)ReadDocument(operation, "D1001");
  }
  {
    const ByteServer server(bytes);
    (void)ReadDocumentVersions(operation, "D1001", "C1");
  }
  {
    const ByteServer server(bytes);
    (void)SearchDocuments(operation, "0000001001", "");
  }
  const ByteServer server(bytes);
  const ReadDirFlags all{15};
  const auto look = [](const DirEntryInfoExt& entry) { vtdirect_fuzz::Look(entry.name); };
  (void)ListWorkspaceFiles(operation, "W1", look, all);
  (void)ListWorkspaceDirs(operation, "C1", look, all);
  return 0;
}
