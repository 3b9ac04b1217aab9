#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "platform/files.h"
#include "platform/http.h"
#include "platform_default/descriptor.h"
#include "platform_default/temporary_space.h"

namespace du::http {

using vtdirect::platform::CloseDescriptor;
using vtdirect::platform::MayGrow;
using vtdirect::platform::WriteAll;

FailoverFileSink::FailoverFileSink(std::size_t memoryLimit) : memoryLimit_(memoryLimit) {}

FailoverFileSink::~FailoverFileSink() {
  CloseDescriptor(&descriptor_);
  if (!filePath_.empty() && !handedOut_) ::unlink(filePath_.c_str());
}

ErrorCode FailoverFileSink::Begin(int, std::optional<std::uint64_t> expectedLength) {
  // The announced length is the server's word: it saves re-allocations and never asks for more than the
  // limit.
  if (expectedLength) buffer_.reserve(std::min<std::uint64_t>(*expectedLength, memoryLimit_));
  return ErrorCode::Done;
}

ErrorCode FailoverFileSink::Write(const std::uint8_t* data, std::size_t count) {
  if (count <= memoryLimit_ - buffer_.size()) {
    buffer_.insert(buffer_.end(), data, data + count);
    return ErrorCode::Done;
  }
  if (filePath_.empty()) {
    const ErrorCode opened = OpenFile();
    if (opened != ErrorCode::Done) return opened;
  }
  if (!WriteBuffer()) return ErrorCode::LocalFileFailure;
  // What arrives in small pieces goes to the disk in large ones, through the memory that there is anyway.
  if (count <= memoryLimit_) {
    buffer_.insert(buffer_.end(), data, data + count);
    return ErrorCode::Done;
  }
  return WriteToFile(data, count) ? ErrorCode::Done : ErrorCode::LocalFileFailure;
}

bool FailoverFileSink::WriteToFile(const std::uint8_t* data, std::size_t count) {
  if (count == 0) return true;
  if (!MayGrow(descriptor_, written_, count)) return false;
  written_ += count;
  return WriteAll(descriptor_, data, count);
}

ErrorCode FailoverFileSink::OpenFile() {
  filePath_ = FileSystem::MkTempFile(nullptr, "response", "tmp");
  if (filePath_.empty()) return ErrorCode::LocalFileFailure;
  descriptor_ = ::open(filePath_.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
  return descriptor_ < 0 ? ErrorCode::LocalFileFailure : ErrorCode::Done;
}

bool FailoverFileSink::WriteBuffer() {
  const bool written = WriteToFile(buffer_.data(), buffer_.size());
  buffer_.clear();
  return written;
}

ErrorCode FailoverFileSink::Finish() {
  const bool written = filePath_.empty() || WriteBuffer();
  return CloseDescriptor(&descriptor_) && written ? ErrorCode::Done : ErrorCode::LocalFileFailure;
}

std::vector<std::uint8_t>&& FailoverFileSink::AdoptBuffer() {
  if (!filePath_.empty()) buffer_.clear();
  return std::move(buffer_);
}

std::string FailoverFileSink::GetFilePath() {
  handedOut_ = true;
  // Of an exchange that broke off, what arrived is handed out; its failure is known already.
  if (descriptor_ >= 0) static_cast<void>(WriteBuffer());
  return filePath_;
}

}  // namespace du::http
