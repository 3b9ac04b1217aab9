#include <fcntl.h>

#include <algorithm>
#include <utility>

#include "platform/http.h"
#include "platform_default/descriptor.h"

namespace du::http {

using vtdirect::platform::CloseDescriptor;
using vtdirect::platform::WriteAll;

DiskFileSink::DiskFileSink(const char* path) : path_(path == nullptr ? "" : path) {}

DiskFileSink::~DiskFileSink() {
  CloseDescriptor(&descriptor_);
}

ErrorCode DiskFileSink::Begin(int, std::optional<std::uint64_t>) {
  if (path_.empty()) return ErrorCode::LocalFileFailure;
  CloseDescriptor(&descriptor_);
  // Without O_NONBLOCK, opening a pipe that nobody reads from would wait for ever. Writing may wait.
  descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
  if (descriptor_ < 0 || ::fcntl(descriptor_, F_SETFL, 0) != 0) return ErrorCode::LocalFileFailure;
  return ErrorCode::Done;
}

ErrorCode DiskFileSink::Write(const std::uint8_t* data, std::size_t count) {
  return WriteAll(descriptor_, data, count) ? ErrorCode::Done : ErrorCode::LocalFileFailure;
}

ErrorCode DiskFileSink::Finish() {
  return CloseDescriptor(&descriptor_) ? ErrorCode::Done : ErrorCode::LocalFileFailure;
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

HttpSuccessFileSink::HttpSuccessFileSink(FileSink* onSuccess, FileSink* onFailure)
    : onSuccess_(onSuccess), onFailure_(onFailure) {}

ErrorCode HttpSuccessFileSink::Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) {
  chosen_ = httpStatus >= 200 && httpStatus <= 299 ? onSuccess_ : onFailure_;
  return chosen_ == nullptr ? ErrorCode::Done : chosen_->Begin(httpStatus, expectedLength);
}

ErrorCode HttpSuccessFileSink::Write(const std::uint8_t* data, std::size_t count) {
  return chosen_ == nullptr ? ErrorCode::Done : chosen_->Write(data, count);
}

ErrorCode HttpSuccessFileSink::Finish() {
  return chosen_ == nullptr ? ErrorCode::Done : chosen_->Finish();
}

ProgressSink::ProgressSink(ProgressFunction report, FileSink* next)
    : report_(std::move(report)), next_(next) {}

ErrorCode ProgressSink::Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) {
  done_ = 0;
  total_ = static_cast<std::size_t>(expectedLength.value_or(0));
  return next_ == nullptr ? ErrorCode::Done : next_->Begin(httpStatus, expectedLength);
}

ErrorCode ProgressSink::Write(const std::uint8_t* data, std::size_t count) {
  if (next_ != nullptr) {
    const ErrorCode result = next_->Write(data, count);
    if (result != ErrorCode::Done) return result;
  }
  done_ += count;
  return !report_ || report_(done_, total_) ? ErrorCode::Done : ErrorCode::Cancelled;
}

ErrorCode ProgressSink::Finish() {
  return next_ == nullptr ? ErrorCode::Done : next_->Finish();
}

}  // namespace du::http
