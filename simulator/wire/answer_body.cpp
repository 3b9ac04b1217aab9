#include "simulator/wire/answer_body.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace vantry_sim {
namespace {

using Kind = FaultAction::Kind;

/// Each slow reader has a block of its own.
constexpr std::size_t blockSize = 64 * 1024;

class Descriptor {
 public:
  /// A symbolic link in the place of a content is no content: it may lead anywhere.
  explicit Descriptor(const std::filesystem::path& path)
      : number_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

/// Gives bytes of a body from `offset` on, at least one and at most `length` of them, whether it lies in
/// memory or on disk. They stay until the next call. Empty when they cannot be read.
using BodyReader = std::function<std::string_view(std::size_t offset, std::size_t length)>;

BodyReader FileReader(const FileBody& body) {
  auto file = std::make_shared<Descriptor>(body.path);
  if (file->number() < 0) return {};
  auto block = std::make_shared<std::vector<char>>(std::min<std::uint64_t>(blockSize, body.size));
  return [file, block, first = body.first](std::size_t offset, std::size_t length) -> std::string_view {
    const std::size_t wanted = std::min(length, block->size());
    const ssize_t count = pread(file->number(), block->data(), wanted, static_cast<off_t>(first + offset));
    return {block->data(), count > 0 ? static_cast<std::size_t>(count) : 0};
  };
}

BodyReader ReaderOf(const Response& response) {
  if (response.file) return FileReader(*response.file);
  auto bytes = response.shared ? response.shared : std::make_shared<const std::string>(response.body);
  return [bytes](std::size_t offset, std::size_t length) {
    return std::string_view(*bytes).substr(offset, length);
  };
}

std::size_t BodySize(const Response& response) {
  if (response.file) return static_cast<std::size_t>(response.file->size);
  return response.shared ? response.shared->size() : response.body.size();
}

/// The body with the lowest bit of its middle byte turned over.
BodyReader Corrupted(BodyReader reader, std::size_t size) {
  auto changed = std::make_shared<std::string>();
  return [reader = std::move(reader), changed, middle = size / 2](std::size_t offset, std::size_t length) {
    const std::string_view bytes = reader(offset, length);
    if (middle < offset || middle - offset >= bytes.size()) return bytes;
    *changed = bytes;
    (*changed)[middle - offset] = static_cast<char>((*changed)[middle - offset] ^ 1);
    return std::string_view(*changed);
  };
}

/// Ten pieces a second, or bytes one by one where that is too fast.
BodyReader Slowed(BodyReader reader, std::uint64_t bytesPerSecond, StopSignal& stop) {
  const std::uint64_t piece = std::clamp<std::uint64_t>(bytesPerSecond / 10, 1, blockSize);
  return [reader = std::move(reader), piece, bytesPerSecond, &stop](std::size_t offset,
                                                                    std::size_t length) -> std::string_view {
    const std::string_view bytes = reader(offset, std::min<std::size_t>(length, piece));
    // When the server ends, the rest goes out at once.
    static_cast<void>(stop.Sleep(std::chrono::milliseconds(bytes.size() * 1000 / bytesPerSecond)));
    return bytes;
  };
}

/// A body that is sent piece by piece, as the HTTP library asks for it.
httplib::ContentProvider Whole(BodyReader reader) {
  return [reader = std::move(reader)](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
    const std::string_view bytes = reader(offset, length);
    return !bytes.empty() && sink.write(bytes.data(), bytes.size());
  };
}

/// Gives the body's first bytes and then does what the fault says.
httplib::ContentProvider Broken(BodyReader reader, const FaultAction& fault, std::size_t limit,
                                ConnectionStream& stream) {
  const bool stalls = fault.kind == Kind::Stall;
  return [whole = Whole(std::move(reader)), limit, stalls, &stream](std::size_t offset, std::size_t length,
                                                                    httplib::DataSink& sink) {
    if (offset < limit) return whole(offset, std::min(length, limit - offset), sink);
    static_cast<void>(stream.Flush());
    if (stalls) stream.WaitForClose();
    stream.Abort();
    return false;
  };
}

bool BreaksOff(const FaultAction& fault) {
  return fault.kind == Kind::Cut || fault.kind == Kind::ChunkedCut || fault.kind == Kind::Stall;
}

void SetBroken(httplib::Response& out, const Response& answer, BodyReader reader, const FaultAction& fault,
               ConnectionStream& stream) {
  const std::size_t size = BodySize(answer);
  const auto limit = static_cast<std::size_t>(std::min<std::uint64_t>(fault.amount.value_or(0), size));
  const auto broken = Broken(std::move(reader), fault, limit, stream);
  if (fault.kind == Kind::ChunkedCut) {
    out.set_chunked_content_provider(answer.contentType,
                                     [broken, limit](std::size_t offset, httplib::DataSink& sink) {
                                       return broken(offset, offset < limit ? limit - offset : 0, sink);
                                     });
  } else {
    out.set_content_provider(size, answer.contentType, broken);
  }
}

/// A client reads no body with these, and would take one for the next answer.
bool HasNoBody(int status) {
  return status == 204 || status == 205 || status == 304;
}

}  // namespace

bool SetBody(httplib::Response& out, const Response& answer, const AnswerWay& way,
             const std::optional<FaultAction>& fault) {
  if (HasNoBody(answer.status)) return true;
  const bool shortOne = !answer.file && (!answer.shared || answer.shared->size() <= shortBody);
  if (!fault && shortOne) {
    out.set_content(answer.shared ? *answer.shared : answer.body, answer.contentType);
    return true;
  }
  BodyReader reader = ReaderOf(answer);
  if (!reader) return false;
  const std::size_t size = BodySize(answer);
  if (fault && BreaksOff(*fault)) {
    SetBroken(out, answer, std::move(reader), *fault, way.stream);
    return true;
  }
  // A provider of no bytes at all would make the HTTP library forget the length.
  if (size == 0) {
    out.set_content(std::string(), answer.contentType);
    return true;
  }
  if (fault && fault->kind == Kind::Corrupt) reader = Corrupted(std::move(reader), size);
  if (fault && fault->kind == Kind::Slow)
    reader = Slowed(std::move(reader), fault->amount.value_or(1), way.stop);
  out.set_content_provider(size, answer.contentType, Whole(std::move(reader)));
  return true;
}

}  // namespace vantry_sim
