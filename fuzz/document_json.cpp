#include <cstddef>
#include <cstdint>

#include "connection/json_parsing.h"
#include "documents/reading/document_reader.h"
#include "documents/reading/file_info.h"

using namespace lxservices::cms_interface::vantry;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  rapidjson::Document document;
  if (!ParseJson(std::string_view(reinterpret_cast<const char*>(data), size), document)) return 0;
  DocumentRecord record;
  if (ReadDocumentRecord(document, record)) (void)MakeFileInfo(record);
  WorkspaceRecord workspace;
  ReadWorkspace(document, workspace);
  return 0;
}
