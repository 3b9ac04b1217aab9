// The ticket for an upload, the receipts of it, and what comes of the documents that name it.
#include <stdexcept>

#include "documents/storing/content_upload.h"
#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"
#include "fuzz/support/scratch_directory.h"

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto& scratch = vtdirect_fuzz::Scratch();
  static const std::string file = [&scratch] {
    vtdirect_fuzz::WriteScratchFile(scratch.File("fork.lxz"), "content");
    return scratch.File("fork.lxz");
  }();
  auto operation = vtdirect_fuzz::NewOperation(true);
  const vtdirect_fuzz::ByteServer server(vtdirect_fuzz::TextOf(data, size));
  try {
    const auto [status, contents] = UploadContents(operation, {file, file}, {});
    vtdirect_fuzz::Require(contents.size() == (status == Ok ? 2 : 0));
  } catch (const std::invalid_argument&) {  // a stream id that is no number: hosts are told so
  } catch (const std::out_of_range&) {
  }
  scratch.RequireNothingLeft();
  return 0;
}
