#include "connection/service_schema.h"

#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"
#include "fuzz/support/scratch_directory.h"

using namespace lxservices::cms_interface::vantry;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto& scratch = vtdirect_fuzz::Scratch();
  const vtdirect_fuzz::ByteServer server(vtdirect_fuzz::TextOf(data, size));
  const auto operation = vtdirect_fuzz::NewOperation(true);
  SchemaQuery query{{"Folder", {{"Name"}, {"Location"}}, {{"FolderContents"}}},
                    {"DynamicDocument", {{"Name"}}, {}}};
  int version = 0;
  (void)FetchSchema(*operation.connection(), "servlet/odata/DataAdmin/$metadata", &query, &version);
  scratch.RequireNothingLeft();
  return 0;
}
