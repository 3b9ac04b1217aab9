#include "connection/bounded_sink.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace lxservices::cms_interface::vantry {

using du::http::ErrorCode;

namespace {

/// Enough for the words of a refusal, however short the document was to be.
constexpr std::uint64_t keptOfRefusal = 64 * 1024;

}  // namespace

ErrorCode BoundedSink::Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) {
  isSuccess_ = httpStatus >= 200 && httpStatus <= 299;
  if (!isSuccess_) left_ = std::max(left_, keptOfRefusal);
  return target_.Begin(httpStatus, expectedLength);
}

ErrorCode BoundedSink::Write(const std::uint8_t* data, std::size_t count) {
  const auto kept = static_cast<std::size_t>(std::min<std::uint64_t>(count, left_));
  left_ -= kept;
  if (kept > 0) {
    if (!FileSystemHas(kept)) return ErrorCode::LocalFileFailure;
    const ErrorCode written = target_.Write(data, kept);
    if (written != ErrorCode::Done) return written;
  }
  exceeded_ = kept < count && isSuccess_;
  return exceeded_ ? ErrorCode::ProtocolFailure : ErrorCode::Done;
}

// Looks from time to time. Where nobody can tell how much there is, there is enough.
bool BoundedSink::FileSystemHas(std::size_t count) {
  constexpr std::uint64_t betweenLooks = 1024 * 1024;
  sinceLook_ += count;
  if (path_.empty() || sinceLook_ < betweenLooks) return true;
  std::error_code error;
  const std::filesystem::space_info space = std::filesystem::space(path_, error);
  if (error || space.capacity == 0) return true;
  const bool has = space.available >= leftOfFileSystem && space.available - leftOfFileSystem >= sinceLook_;
  sinceLook_ = 0;
  return has;
}

}  // namespace lxservices::cms_interface::vantry
