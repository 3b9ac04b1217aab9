#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "platform/http.h"

namespace vtdirect::platform {

/// Stands between an exchange and the caller's sink.
///
/// An answer that may yet be followed by a further try is held back in memory: it is no success, and of those
/// little is kept (RefusalSink). Any other goes straight through. So the caller's sink is begun once, whatever
/// number of tries it took.
class RoutingSink final : public du::http::FileSink {
 public:
  using HoldBack = std::function<bool(int httpStatus)>;

  /// @param target    the caller's sink; null throws the body away
  /// @param holdBack  asked once, with the status, when the answer begins
  RoutingSink(du::http::FileSink* target, HoldBack holdBack);
  ~RoutingSink() override;

  [[nodiscard]] du::http::ErrorCode Begin(int httpStatus,
                                          std::optional<std::uint64_t> expectedLength) override;
  [[nodiscard]] du::http::ErrorCode Write(const std::uint8_t* data, std::size_t count) override;
  [[nodiscard]] du::http::ErrorCode Finish() override;

  /// Hands an answer that was held back on to the caller's sink. Does nothing for one that went through.
  [[nodiscard]] du::http::ErrorCode Deliver();

 private:
  du::http::FileSink* target_;
  HoldBack holdBack_;
  int httpStatus_ = 0;
  std::optional<std::uint64_t> expectedLength_;
  std::optional<std::vector<std::uint8_t>> held_;
};

}  // namespace vtdirect::platform
