#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/http.h"
#include "platform_default/descriptor.h"

namespace du::http {

using vtdirect::platform::CloseDescriptor;
using vtdirect::platform::ReadSome;

BufferFileSource::BufferFileSource(const std::uint8_t* data, std::size_t size)
    : data_(data), size_(data == nullptr ? 0 : size) {}

std::optional<std::uint64_t> BufferFileSource::Size() {
  return size_;
}

ErrorCode BufferFileSource::Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) {
  *count = std::min(capacity, size_ - position_);
  if (*count > 0) std::memcpy(buffer, data_ + position_, *count);
  position_ += *count;
  return ErrorCode::Done;
}

bool BufferFileSource::Rewind() {
  position_ = 0;
  return true;
}

DiskFileSource::DiskFileSource(const char* path) : path_(path == nullptr ? "" : path) {}

DiskFileSource::~DiskFileSource() {
  CloseDescriptor(&descriptor_);
}

bool DiskFileSource::Open() {
  if (descriptor_ >= 0) return true;
  if (path_.empty()) return false;
  descriptor_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  return descriptor_ >= 0;
}

std::optional<std::uint64_t> DiskFileSource::Size() {
  struct stat status {};
  if (!Open() || ::fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(status.st_size);
}

ErrorCode DiskFileSource::Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) {
  *count = 0;
  if (!Open()) return ErrorCode::LocalFileFailure;
  const std::ptrdiff_t got = ReadSome(descriptor_, buffer, capacity);
  if (got < 0) return ErrorCode::LocalFileFailure;
  *count = static_cast<std::size_t>(got);
  return ErrorCode::Done;
}

bool DiskFileSource::Rewind() {
  return descriptor_ < 0 || ::lseek(descriptor_, 0, SEEK_SET) == 0;
}

ProgressSource::ProgressSource(FileSource& inner, ProgressFunction report)
    : inner_(inner), report_(std::move(report)) {}

std::optional<std::uint64_t> ProgressSource::Size() {
  return inner_.Size();
}

ErrorCode ProgressSource::Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) {
  const ErrorCode result = inner_.Read(buffer, capacity, count);
  if (result != ErrorCode::Done || *count == 0) return result;
  done_ += *count;
  if (report_ && !report_(done_, static_cast<std::size_t>(inner_.Size().value_or(0)))) {
    return ErrorCode::Cancelled;
  }
  return ErrorCode::Done;
}

bool ProgressSource::Rewind() {
  if (!inner_.Rewind()) return false;
  done_ = 0;
  return true;
}

}  // namespace du::http
