#include "connection/server_information.h"

#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"
#include "fuzz/support/scratch_directory.h"

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto& scratch = vtdirect_fuzz::Scratch();
  const vtdirect_fuzz::ByteServer server(vtdirect_fuzz::TextOf(data, size));
  const auto operation = vtdirect_fuzz::NewOperation(true);
  ServerInfo information;
  if (GetServerInfo(*operation.http(), information) == Status::Ok) {
    vtdirect_fuzz::Require(!information.codebaseUrl.ends_with('/'));
  }
  scratch.RequireNothingLeft();
  return 0;
}
