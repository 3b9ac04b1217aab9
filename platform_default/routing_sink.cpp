#include "platform_default/routing_sink.h"

#include <utility>

namespace vtdirect::platform {

using du::http::ErrorCode;

RoutingSink::RoutingSink(du::http::FileSink* target, HoldBack holdBack)
    : target_(target), holdBack_(std::move(holdBack)) {}

RoutingSink::~RoutingSink() = default;

ErrorCode RoutingSink::Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) {
  if (holdBack_(httpStatus)) {
    httpStatus_ = httpStatus;
    expectedLength_ = expectedLength;
    held_.emplace();
    return ErrorCode::Done;
  }
  return target_ == nullptr ? ErrorCode::Done : target_->Begin(httpStatus, expectedLength);
}

ErrorCode RoutingSink::Write(const std::uint8_t* data, std::size_t count) {
  if (held_) {
    held_->insert(held_->end(), data, data + count);
    return ErrorCode::Done;
  }
  return target_ == nullptr ? ErrorCode::Done : target_->Write(data, count);
}

ErrorCode RoutingSink::Finish() {
  if (held_) return ErrorCode::Done;
  return target_ == nullptr ? ErrorCode::Done : target_->Finish();
}

ErrorCode RoutingSink::Deliver() {
  if (!held_ || target_ == nullptr) return ErrorCode::Done;
  const ErrorCode begun = target_->Begin(httpStatus_, expectedLength_);
  if (begun != ErrorCode::Done) return begun;
  const ErrorCode written = held_->empty() ? ErrorCode::Done : target_->Write(held_->data(), held_->size());
  return written == ErrorCode::Done ? target_->Finish() : written;
}

}  // namespace vtdirect::platform
