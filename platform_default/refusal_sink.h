#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/http.h"

namespace vtdirect::platform {

/// Of the body of an answer that is no success, as much goes on to the sink. It is there for words and traces.
inline constexpr std::size_t keptOfRefusal = 64 * 1024;
/// As much more is read, so that the connection can be used for the next request. After that it is closed.
inline constexpr std::size_t skippedOfRefusal = 1024 * 1024;

/// True for 200 to 299.
[[nodiscard]] constexpr bool IsSuccess(int httpStatus) {
  return httpStatus >= 200 && httpStatus <= 299;
}

/// Stands before the sink of an answer that is no success: a failure, a redirect, a demand for
/// authentication. No server can fill memory or a disk with one.
class RefusalSink final : public du::http::FileSink {
 public:
  /// @param target  must outlive this one
  explicit RefusalSink(du::http::FileSink& target) : target_(target) {}

  /// Announces no length when more is announced than the target will get.
  [[nodiscard]] du::http::ErrorCode Begin(int httpStatus,
                                          std::optional<std::uint64_t> expectedLength) override;
  /// @return also `Cancelled` once it is full
  [[nodiscard]] du::http::ErrorCode Write(const std::uint8_t* data, std::size_t count) override;
  [[nodiscard]] du::http::ErrorCode Finish() override { return target_.Finish(); }

  /// True once more came than is read of such an answer. What the target has got of it is the whole answer.
  [[nodiscard]] bool IsFull() const { return taken_ > keptOfRefusal + skippedOfRefusal; }

 private:
  du::http::FileSink& target_;
  std::size_t taken_ = 0;
};

}  // namespace vtdirect::platform
