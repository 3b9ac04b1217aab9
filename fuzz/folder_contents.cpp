#include <cstddef>
#include <cstdint>
#include <string_view>

#include "browsing/folder_contents_handler.h"
#include "connection/json_parsing.h"

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

namespace {

// Reads what a host would: every text of a row, and every version up to the null after the last.
void Look(const DirEntryInfoExt& entry) {
  volatile std::size_t length = std::string_view(entry.name).size() + std::string_view(entry.id).size();
  if (entry.details != nullptr) length = length + std::string_view(entry.details->number).size();
  if (entry.versions == nullptr) return;
  for (std::size_t index = 0; entry.versions[index] != nullptr; ++index) {
    length = length + std::string_view(entry.versions[index]).size() +
             std::string_view(entry.versionIds[index]).size();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const bool fileNameKey : {false, true}) {
    FolderContentsHandler handler({true, true, fileNameKey}, Look);
    (void)ReadJson(std::string_view(reinterpret_cast<const char*>(data), size), handler);
  }
  return 0;
}
