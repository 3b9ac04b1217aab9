// Where the bytes of requests come from, and where those of answers go.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vtdirect/platform/files.h>
#include <vtdirect/platform/http.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace du::http {
namespace {

bool WriteAll(int descriptor, const std::uint8_t* data, std::size_t count) {
  while (count > 0) {
    const ssize_t written = write(descriptor, data, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    data += written;
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

// Closes and forgets; false when the last bytes could not be written.
bool Close(int* descriptor) {
  const bool closed = *descriptor < 0 || close(*descriptor) == 0;
  *descriptor = -1;
  return closed;
}

ErrorCode DoneIf(bool worked) {
  return worked ? ErrorCode::Done : ErrorCode::LocalFileFailure;
}

}  // namespace

FileSource::~FileSource() = default;
FileSink::~FileSink() = default;

BufferFileSource::BufferFileSource(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
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
  Close(&descriptor_);
}
bool DiskFileSource::Open() {
  if (descriptor_ < 0) descriptor_ = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
  return descriptor_ >= 0;
}
std::optional<std::uint64_t> DiskFileSource::Size() {
  struct stat status {};
  if (!Open() || fstat(descriptor_, &status) != 0) return std::nullopt;
  return static_cast<std::uint64_t>(status.st_size);
}
ErrorCode DiskFileSource::Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) {
  const ssize_t got = Open() ? read(descriptor_, buffer, capacity) : -1;
  *count = got < 0 ? 0 : static_cast<std::size_t>(got);
  return DoneIf(got >= 0);
}
bool DiskFileSource::Rewind() {
  return Open() && lseek(descriptor_, 0, SEEK_SET) == 0;
}

DiskFileSink::DiskFileSink(const char* path) : path_(path == nullptr ? "" : path) {}
DiskFileSink::~DiskFileSink() {
  Close(&descriptor_);
}
ErrorCode DiskFileSink::Begin(int, std::optional<std::uint64_t>) {
  descriptor_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  return DoneIf(descriptor_ >= 0);
}
ErrorCode DiskFileSink::Write(const std::uint8_t* data, std::size_t count) {
  return DoneIf(WriteAll(descriptor_, data, count));
}
ErrorCode DiskFileSink::Finish() {
  return DoneIf(Close(&descriptor_));
}

StringFileSink::StringFileSink(std::string& target, std::size_t limit) : target_(target), remaining_(limit) {}
ErrorCode StringFileSink::Begin(int, std::optional<std::uint64_t>) {
  return ErrorCode::Done;
}
ErrorCode StringFileSink::Write(const std::uint8_t* data, std::size_t count) {
  const std::size_t taken = std::min(count, remaining_);
  target_.append(reinterpret_cast<const char*>(data), taken);
  remaining_ -= taken;
  return ErrorCode::Done;
}
ErrorCode StringFileSink::Finish() {
  return ErrorCode::Done;
}

// A body that is too large for the memory goes into a temporary file, which its reader removes.
FailoverFileSink::FailoverFileSink(std::size_t memoryLimit) : memoryLimit_(memoryLimit) {}
FailoverFileSink::~FailoverFileSink() {
  Close(&descriptor_);
  if (!filePath_.empty() && !handedOut_) unlink(filePath_.c_str());
}
ErrorCode FailoverFileSink::Begin(int, std::optional<std::uint64_t>) {
  return ErrorCode::Done;
}
ErrorCode FailoverFileSink::OpenFile() {
  filePath_ = FileSystem::MkTempFile(nullptr, "answer", "tmp");
  if (!filePath_.empty()) descriptor_ = open(filePath_.c_str(), O_WRONLY | O_CLOEXEC);
  return DoneIf(descriptor_ >= 0 && WriteBuffer());
}
bool FailoverFileSink::WriteBuffer() {
  const bool written = WriteAll(descriptor_, buffer_.data(), buffer_.size());
  buffer_.clear();
  return written;
}
ErrorCode FailoverFileSink::Write(const std::uint8_t* data, std::size_t count) {
  if (descriptor_ < 0 && count <= memoryLimit_ - std::min(memoryLimit_, buffer_.size())) {
    buffer_.insert(buffer_.end(), data, data + count);
    return ErrorCode::Done;
  }
  if (descriptor_ < 0 && OpenFile() != ErrorCode::Done) return ErrorCode::LocalFileFailure;
  return DoneIf(WriteAll(descriptor_, data, count));
}
ErrorCode FailoverFileSink::Finish() {
  return DoneIf(Close(&descriptor_));
}
std::vector<std::uint8_t>&& FailoverFileSink::AdoptBuffer() {
  return std::move(buffer_);
}
std::string FailoverFileSink::GetFilePath() {
  handedOut_ = true;
  return filePath_;
}

HttpSuccessFileSink::HttpSuccessFileSink(FileSink* onSuccess, FileSink* onFailure)
    : onSuccess_(onSuccess), onFailure_(onFailure) {}
ErrorCode HttpSuccessFileSink::Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) {
  chosen_ = httpStatus / 100 == 2 ? onSuccess_ : onFailure_;
  return chosen_->Begin(httpStatus, expectedLength);
}
ErrorCode HttpSuccessFileSink::Write(const std::uint8_t* data, std::size_t count) {
  return chosen_->Write(data, count);
}
ErrorCode HttpSuccessFileSink::Finish() {
  return chosen_->Finish();
}

ProgressSink::ProgressSink(ProgressFunction report, FileSink* next)
    : report_(std::move(report)), next_(next) {}
ErrorCode ProgressSink::Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) {
  total_ = static_cast<std::size_t>(expectedLength.value_or(0));
  return next_->Begin(httpStatus, expectedLength);
}
ErrorCode ProgressSink::Write(const std::uint8_t* data, std::size_t count) {
  done_ += count;
  if (report_ && !report_(done_, total_)) return ErrorCode::Cancelled;
  return next_->Write(data, count);
}
ErrorCode ProgressSink::Finish() {
  return next_->Finish();
}
ProgressSource::ProgressSource(FileSource& inner, ProgressFunction report)
    : inner_(inner), report_(std::move(report)) {}
std::optional<std::uint64_t> ProgressSource::Size() {
  return inner_.Size();
}
ErrorCode ProgressSource::Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) {
  const ErrorCode code = inner_.Read(buffer, capacity, count);
  if (code != ErrorCode::Done || *count == 0) return code;
  done_ += *count;
  return !report_ || report_(done_, inner_.Size().value_or(0)) ? ErrorCode::Done : ErrorCode::Cancelled;
}
bool ProgressSource::Rewind() {
  done_ = 0;
  return inner_.Rewind();
}

}  // namespace du::http
