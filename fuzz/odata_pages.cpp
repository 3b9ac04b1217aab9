// Pages of rows with the links from one to the next, and what is read from them in passing: folders, and a walk
// into one of them.
#include "browsing/expanded_folders.h"
#include "browsing/folder_contents.h"
#include "browsing/folder_tree.h"
#include "browsing/odata_rows.h"
#include "browsing/walked_folder.h"
#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using vtdirect_fuzz::ByteServer;

namespace {

void LookAt(const DirEntryInfoExt& entry) {
  vtdirect_fuzz::Look(entry.name);
  if (entry.id != nullptr) vtdirect_fuzz::Look(entry.id);
}

void ListFolders(std::string_view bytes) {
  auto operation = vtdirect_fuzz::NewOperation(true);
  {
    const ByteServer server(bytes);
    (void)ListSubfolders(operation, "Containers('C1')/Folders('F1')", LookAt);
  }
  {
    const ByteServer server(bytes);
    (void)ListODataFolderV5(operation, "Containers('C1')/Folders('F1')", LookAt, true, true);
  }
  const ByteServer server(bytes);
  (void)ResolveFolderResource(operation, "Bikes", "ZVK.DataAdmin.ProductContainer", "Parts/Frames");
}

void WalkFolders(std::string_view bytes) {
  constexpr auto everything = static_cast<ReadDirFlags>(Files | Directories | Details | Versions);
  std::shared_ptr<WalkedDirectory> folder = BeginWalkAtFolder(
      vtdirect_fuzz::NewOperation(true), "Products/Bikes/Folders/", "Containers('C1')/Folders('F1')");
  for (int level = 0; level < 2 && folder != nullptr; ++level) {
    const ByteServer server(bytes);
    std::shared_ptr<WalkedDirectory> below;
    const auto look = [&below](const DirEntryInfoExt& entry,
                               const std::shared_ptr<WalkedDirectory>& directory) {
      LookAt(entry);
      if (directory != nullptr) below = directory;
    };
    (void)folder->List(look, everything);
    folder = below;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  {
    const ByteServer server(bytes);
    auto operation = vtdirect_fuzz::NewOperation(true);
    std::size_t rows = 0;
    const auto visit = [&](const rapidjson::Value& page) {
      rows += page.Size();
      return rows < 1000;
    };
    (void)VisitODataPages(operation, "servlet/odata/v5/DataAdmin/Containers", visit);
  }
  ListFolders(bytes);
  WalkFolders(bytes);
  return 0;
}
