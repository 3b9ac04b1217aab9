#include "simulator/wire/answer_body.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace vantry_sim {
namespace {

constexpr std::size_t kBlock = 256 * 1024;

class Descriptor {
 public:
  explicit Descriptor(const std::filesystem::path& path)
      : number_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

/// Gives the bytes [offset, offset + length) of a body, whether it lies in memory or on disk.
using BodyReader = std::function<bool(std::size_t offset, std::size_t length, httplib::DataSink& sink)>;

BodyReader ReaderOf(const Response& response) {
  if (!response.file) {
    return [body = response.body](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
      return sink.write(body.data() + offset, length);
    };
  }
  auto file = std::make_shared<Descriptor>(response.file->path);
  if (file->number() < 0) return {};
  auto block = std::make_shared<std::vector<char>>(kBlock);
  return [file, block](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
    const std::size_t wanted = std::min(length, block->size());
    const ssize_t count = pread(file->number(), block->data(), wanted, static_cast<off_t>(offset));
    return count > 0 && sink.write(block->data(), static_cast<std::size_t>(count));
  };
}

std::size_t BodySize(const Response& response) {
  return response.file ? static_cast<std::size_t>(response.file->size) : response.body.size();
}

/// Gives the body's first bytes and then does what the fault says.
BodyReader Broken(BodyReader reader, const FaultAction& fault, std::size_t limit, ConnectionStream& stream) {
  const bool stalls = fault.kind == FaultAction::Kind::kStall;
  return [reader = std::move(reader), limit, stalls, &stream](std::size_t offset, std::size_t length,
                                                              httplib::DataSink& sink) {
    if (offset < limit) return reader(offset, std::min(length, limit - offset), sink);
    if (stalls) stream.WaitForClose();
    stream.Abort();
    return false;
  };
}

}  // namespace

bool SetBody(httplib::Response& out, const Response& answer, ConnectionStream& stream,
             const std::optional<FaultAction>& fault) {
  constexpr int kNoContent = 204;
  if (answer.status == kNoContent) return true;
  BodyReader reader = ReaderOf(answer);
  if (!reader) return false;
  const std::size_t size = BodySize(answer);
  // A provider of no bytes at all would make the HTTP library forget the length.
  if (!fault && (!answer.file || size == 0)) {
    out.set_content(answer.body, answer.content_type);
    return true;
  }
  if (!fault) {
    out.set_content_provider(size, answer.content_type, reader);
    return true;
  }
  const std::size_t limit = static_cast<std::size_t>(std::min<std::uint64_t>(*fault->bytes, size));
  const BodyReader broken = Broken(std::move(reader), *fault, limit, stream);
  if (fault->kind == FaultAction::Kind::kChunkedCut) {
    out.set_chunked_content_provider(answer.content_type,
                                     [broken, limit](std::size_t offset, httplib::DataSink& sink) {
                                       return broken(offset, offset < limit ? limit - offset : 0, sink);
                                     });
  } else {
    out.set_content_provider(size, answer.content_type, broken);
  }
  return true;
}

}  // namespace vantry_sim
