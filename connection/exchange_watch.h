#pragma once

#include "platform/http.h"

namespace lxservices::cms_interface::vantry {

/// Passes a request's body through and notes whether it was read to its end: a server can't carry out a
/// request of which the rest is missing.
class WatchedSource final : public du::http::FileSource {
 public:
  explicit WatchedSource(du::http::FileSource& source) : source_(source) {}

  std::optional<std::uint64_t> Size() override { return source_.Size(); }
  du::http::ErrorCode Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) override;
  bool Rewind() override;

  /// Whether the last try, after the last Rewind, has read all.
  [[nodiscard]] bool wasReadWhole();

 private:
  du::http::FileSource& source_;
  std::uint64_t count_ = 0;
  bool ended_ = false;
};

}  // namespace lxservices::cms_interface::vantry
