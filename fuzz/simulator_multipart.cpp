// A multipart body in pieces of all sizes: the parts are the same. The first line is the Content-Type.
#include "simulator/wire/multipart_reader.h"

#include <algorithm>

#include "fuzz/support/input.h"

using namespace vantry_sim;

namespace {

class TextSink final : public PartSink {
 public:
  std::string text;
  bool BeginPart(const PartHead& head) override {
    text += "[" + head.name + "|" + head.fileName + "|" + head.type + "|";
    return true;
  }
  bool PartBytes(std::string_view bytes) override {
    text += bytes;
    return true;
  }
  bool EndPart() override {
    text += "]";
    return true;
  }
};

/// @return what was read of a body that came to its end, else nothing
std::string InPieces(std::string_view boundary, std::string_view body, std::size_t piece) {
  TextSink sink;
  MultipartReader reader(boundary, sink);
  for (; !body.empty(); body.remove_prefix(std::min(piece, body.size()))) {
    if (!reader.Feed(std::string(body.substr(0, piece)))) return {};
  }
  return reader.finished() ? sink.text : std::string();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view body = vtdirect_fuzz::TextOf(data, size);
  const std::string boundary = BoundaryOf(vtdirect_fuzz::TakePart(body, '\n'));
  if (boundary.empty()) return 0;
  const std::string whole = InPieces(boundary, body, size);
  for (const std::size_t piece : {1, 2, 7}) vtdirect_fuzz::Require(InPieces(boundary, body, piece) == whole);
  return 0;
}
