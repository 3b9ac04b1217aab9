#include <cstddef>
#include <cstdint>

#include "connection/json_members.h"
#include "connection/json_parsing.h"
#include "translation/xliff_folder.h"

using namespace lxservices::cms_interface::vantry;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  rapidjson::Document document;
  if (!ParseJson(std::string_view(reinterpret_cast<const char*>(data), size), document)) return 0;
  (void)FindFolderInTree(document, "Sub", "/Trans");
  const rapidjson::Value* rows = FindArray(document, "value");
  if (rows != nullptr) (void)FindFolderInTree(*rows, "Sub", "/Trans");
  return 0;
}
