// A compressed answer, in one piece and byte by byte: both give the same, or both fail. The first byte chooses
// the coding.
#include <algorithm>
#include <string>

#include "fuzz/support/input.h"
#include "platform_default/answer_decoder.h"

using namespace vtdirect::platform;
using du::http::ErrorCode;

namespace {

constexpr std::size_t mostBytes = 1 << 20;

class TextSink final : public du::http::FileSink {
 public:
  std::string text;
  ErrorCode Begin(int, std::optional<std::uint64_t>) override { return ErrorCode::Done; }
  ErrorCode Write(const std::uint8_t* data, std::size_t count) override {
    text.append(reinterpret_cast<const char*>(data), count);
    return text.size() > mostBytes ? ErrorCode::LocalFileFailure : ErrorCode::Done;
  }
  ErrorCode Finish() override { return ErrorCode::Done; }
};

struct Outcome {
  bool complete = false;
  std::string text;
  friend bool operator==(const Outcome&, const Outcome&) = default;
};

Outcome Unpack(const char* coding, std::string_view packed, std::size_t piece) {
  const auto decoder = AnswerDecoder::For(coding);
  TextSink sink;
  for (; !packed.empty(); packed.remove_prefix(std::min(piece, packed.size()))) {
    const std::string part(
        packed.substr(0, piece));  // its own memory, so that a reader beyond its end is seen
    const auto* data = reinterpret_cast<const std::uint8_t*>(part.data());
    if (decoder->Decode(data, part.size(), sink) != ErrorCode::Done) return {};
  }
  if (!decoder->IsComplete()) return {};
  return {true, sink.text};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view packed = vtdirect_fuzz::TextOf(data, size);
  if (packed.empty()) return 0;
  const char* const coding = packed.front() == 'd' ? "deflate" : "gzip";
  packed.remove_prefix(1);
  vtdirect_fuzz::Require(Unpack(coding, packed, packed.size()) == Unpack(coding, packed, 1));
  return 0;
}
