#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "platform/http.h"

namespace lxservices::cms_interface::vantry {

/// Bytes of a file system that the library never uses for files of its own.
inline constexpr std::uint64_t leftOfFileSystem = std::uint64_t{64} << 20;

/// Comes before the sink of a file, so that no server can fill a disk. A success that is too long ends the exchange
/// as a broken answer; one that would fill the file system ends it as a local failure. Any other answer is cut at
/// the bound, and at 64 KiB.
class BoundedSink final : public du::http::FileSink {
 public:
  /// @param target   must outlive this one
  /// @param longest  in bytes
  /// @param path     any file on the file system of the target; empty for a user's file, which may take all of it
  BoundedSink(du::http::FileSink& target, std::uint64_t longest, std::string path)
      : target_(target), left_(longest), path_(std::move(path)) {}

  [[nodiscard]] du::http::ErrorCode Begin(int httpStatus,
                                          std::optional<std::uint64_t> expectedLength) override;
  [[nodiscard]] du::http::ErrorCode Write(const std::uint8_t* data, std::size_t count) override;
  [[nodiscard]] du::http::ErrorCode Finish() override { return target_.Finish(); }

  /// True when a success was longer than it may be.
  [[nodiscard]] bool WasExceeded() const { return exceeded_; }

 private:
  [[nodiscard]] bool FileSystemHas(std::size_t count);

  du::http::FileSink& target_;
  std::uint64_t left_;
  const std::string path_;
  std::uint64_t sinceLook_ = 0;
  bool isSuccess_ = false;
  bool exceeded_ = false;
};

}  // namespace lxservices::cms_interface::vantry
