#include "connection/exchange_watch.h"

namespace lxservices::cms_interface::vantry {

du::http::ErrorCode WatchedSource::Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) {
  const auto result = source_.Read(buffer, capacity, count);
  if (result != du::http::ErrorCode::Done) return result;
  count_ += *count;
  ended_ = ended_ || (*count == 0 && capacity > 0);
  return result;
}

bool WatchedSource::Rewind() {
  count_ = 0;
  ended_ = false;
  return source_.Rewind();
}

// A transport that knows the length need not read on to see the end.
bool WatchedSource::wasReadWhole() {
  const auto size = source_.Size();
  return ended_ || (size && count_ >= *size);
}

}  // namespace lxservices::cms_interface::vantry
