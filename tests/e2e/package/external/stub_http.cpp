// The HTTP part of a platform that a host might bring: no network, every GET is answered with one document.
#include <vtdirect/platform/http.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace du::http {
namespace {

class StubConnection final : public Connection {};

constexpr std::string_view answer = R"({"id":"D1001","epmMaster":{"cadName":"stub.lxz"}})";

}  // namespace

Connection::~Connection() = default;
FileSource::~FileSource() = default;
FileSink::~FileSink() = default;

std::unique_ptr<Connection> ConnectURI(const char*, const char*, const char*) {
  return std::make_unique<StubConnection>();
}

ErrorCode DoRequestWithCommonAuth(Connection&, const CommonAuth&, const Request& request, int* httpStatus) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(answer.data());
  if (request.sink->Begin(200, answer.size()) != ErrorCode::Done) return ErrorCode::LocalFileFailure;
  if (request.sink->Write(bytes, answer.size()) != ErrorCode::Done) return ErrorCode::LocalFileFailure;
  *httpStatus = 200;
  return request.sink->Finish();
}

BufferFileSource::BufferFileSource(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
std::optional<std::uint64_t> BufferFileSource::Size() {
  return size_;
}
ErrorCode BufferFileSource::Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) {
  *count = std::min(capacity, size_ - position_);
  std::memcpy(buffer, data_ + position_, *count);
  position_ += *count;
  return ErrorCode::Done;
}
bool BufferFileSource::Rewind() {
  position_ = 0;
  return true;
}

// This host sends no files and keeps no downloads, so these refuse.
DiskFileSource::DiskFileSource(const char*) {}
DiskFileSource::~DiskFileSource() = default;
std::optional<std::uint64_t> DiskFileSource::Size() {
  return std::nullopt;
}
ErrorCode DiskFileSource::Read(std::uint8_t*, std::size_t, std::size_t*) {
  return ErrorCode::LocalFileFailure;
}
bool DiskFileSource::Rewind() {
  return false;
}
DiskFileSink::DiskFileSink(const char*) {}
DiskFileSink::~DiskFileSink() = default;
ErrorCode DiskFileSink::Begin(int, std::optional<std::uint64_t>) {
  return ErrorCode::LocalFileFailure;
}
ErrorCode DiskFileSink::Write(const std::uint8_t*, std::size_t) {
  return ErrorCode::LocalFileFailure;
}
ErrorCode DiskFileSink::Finish() {
  return ErrorCode::LocalFileFailure;
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

FailoverFileSink::FailoverFileSink(std::size_t memoryLimit) : memoryLimit_(memoryLimit) {}
FailoverFileSink::~FailoverFileSink() = default;
ErrorCode FailoverFileSink::Begin(int, std::optional<std::uint64_t>) {
  return ErrorCode::Done;
}
ErrorCode FailoverFileSink::Write(const std::uint8_t* data, std::size_t count) {
  if (count > memoryLimit_ - buffer_.size()) return ErrorCode::LocalFileFailure;
  buffer_.insert(buffer_.end(), data, data + count);
  return ErrorCode::Done;
}
ErrorCode FailoverFileSink::Finish() {
  return ErrorCode::Done;
}
std::vector<std::uint8_t>&& FailoverFileSink::AdoptBuffer() {
  return std::move(buffer_);
}
std::string FailoverFileSink::GetFilePath() {
  return {};
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
  return next_->Begin(httpStatus, expectedLength);
}
ErrorCode ProgressSink::Write(const std::uint8_t* data, std::size_t count) {
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
  return inner_.Read(buffer, capacity, count);
}
bool ProgressSource::Rewind() {
  return inner_.Rewind();
}

}  // namespace du::http
