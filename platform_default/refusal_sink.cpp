#include "platform_default/refusal_sink.h"

#include <algorithm>

namespace vtdirect::platform {

using du::http::ErrorCode;

ErrorCode RefusalSink::Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) {
  if (expectedLength && *expectedLength > keptOfRefusal) expectedLength.reset();
  return target_.Begin(httpStatus, expectedLength);
}

ErrorCode RefusalSink::Write(const std::uint8_t* data, std::size_t count) {
  const std::size_t kept = std::min(count, keptOfRefusal - std::min(taken_, keptOfRefusal));
  taken_ += count;
  if (kept > 0) {
    const ErrorCode written = target_.Write(data, kept);
    if (written != ErrorCode::Done) return written;
  }
  return IsFull() ? ErrorCode::Cancelled : ErrorCode::Done;
}

}  // namespace vtdirect::platform
