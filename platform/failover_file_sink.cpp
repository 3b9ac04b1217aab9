#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "connection/platform/files.h"
#include "connection/platform/http.h"
#include "platform/descriptor.h"

namespace du::http {

using vtdirect::platform::CloseDescriptor;
using vtdirect::platform::WriteAll;

FailoverFileSink::FailoverFileSink(std::size_t memoryLimit) : memoryLimit_(memoryLimit) {}

FailoverFileSink::~FailoverFileSink() {
  CloseDescriptor(&descriptor_);
  if (!filePath_.empty() && !handedOut_) ::unlink(filePath_.c_str());
}

ErrorCode FailoverFileSink::Begin(int, std::optional<std::uint64_t> expectedLength) {
  // The announced length is the server's word: it saves re-allocations and never asks for more than the
  // limit.
  if (expectedLength && *expectedLength <= memoryLimit_) {
    buffer_.reserve(static_cast<std::size_t>(*expectedLength));
  }
  return ErrorCode::Done;
}

ErrorCode FailoverFileSink::Write(const std::uint8_t* data, std::size_t count) {
  if (filePath_.empty() && count <= memoryLimit_ - buffer_.size()) {
    buffer_.insert(buffer_.end(), data, data + count);
    return ErrorCode::Done;
  }
  if (filePath_.empty()) {
    const ErrorCode moved = MoveToFile();
    if (moved != ErrorCode::Done) return moved;
  }
  return WriteAll(descriptor_, data, count) ? ErrorCode::Done : ErrorCode::LocalFileFailure;
}

ErrorCode FailoverFileSink::MoveToFile() {
  filePath_ = FileSystem::MkTempFile(nullptr, "response", "tmp");
  if (filePath_.empty()) return ErrorCode::LocalFileFailure;
  descriptor_ = ::open(filePath_.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor_ < 0) return ErrorCode::LocalFileFailure;
  const std::vector<std::uint8_t> moving = std::exchange(buffer_, {});
  return WriteAll(descriptor_, moving.data(), moving.size()) ? ErrorCode::Done : ErrorCode::LocalFileFailure;
}

ErrorCode FailoverFileSink::Finish() {
  return CloseDescriptor(&descriptor_) ? ErrorCode::Done : ErrorCode::LocalFileFailure;
}

std::vector<std::uint8_t>&& FailoverFileSink::AdoptBuffer() {
  return std::move(buffer_);
}

std::string FailoverFileSink::GetFilePath() {
  handedOut_ = true;
  return filePath_;
}

}  // namespace du::http
