#pragma once

#include <rapidjson/document.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "connection/exchange_failure.h"
#include "connection/rest_request.h"
#include "connection/scoped_temp_path.h"

namespace lxservices::cms_interface::vantry {

/// Whether an HTTP status tells success.
[[nodiscard]] constexpr bool IsSuccess(int httpStatus) {
  return httpStatus >= 200 && httpStatus <= 299;
}

/// One exchange and the owner of its response body. Constructing it performs the exchange, on this thread.
///
/// A body of up to 524288 bytes stays in memory; a longer one goes through a temporary file that vanishes
/// with this object. It is read piece by piece from its first byte to its last, and after Rewind once more.
/// Used by one thread at a time. The read buffer lives inside, so the object is neither copied nor moved:
/// build it on the stack, or shared when reading goes on after the function that sent the request.
class RestStream {
 public:
  static constexpr std::size_t memoryLimit = 0x80000;
  static constexpr std::size_t errorLimit = 1024;

  /// @param progress  may be empty; told about the body sent when there is one, else about the body received
  RestStream(const RestRequest& request, du::http::ProgressFunction progress);
  ~RestStream();
  RestStream(const RestStream&) = delete;
  RestStream& operator=(const RestStream&) = delete;

  /// The HTTP status, or -1 when the exchange did not take place.
  [[nodiscard]] int status() const { return status_; }
  [[nodiscard]] bool succeeded() const { return IsSuccess(status_); }
  [[nodiscard]] du::http::ErrorCode errorCode() const { return errorCode_; }
  /// Whether the body of a success is on the disk and could be opened.
  [[nodiscard]] bool isBodyOnDisk() const { return file_ != nullptr; }
  /// Whether the body of a success, which may be empty, is in memory.
  [[nodiscard]] bool isBodyInMemory() const { return succeeded() && tempFile_ == nullptr; }
  /// The next piece of the body of a success: all of one that is in memory, at most 65536 bytes of one that
  /// is on the disk. Empty at the end, and without a body. Valid until the next call.
  [[nodiscard]] std::string_view NextPiece();
  /// Reports that the body of a success is not what the step needs. Nothing for a failure, which has been
  /// reported when it came.
  void ReportBroken() const;
  /// Goes back to the first byte of the body of a success, for another reading.
  void Rewind();
  /// The first 1024 bytes of the body of a response outside 200 to 299.
  [[nodiscard]] const std::string& errorText() const { return errorText_; }

 private:
  void Exchange(const RestRequest& request, du::http::ProgressFunction progress);
  void Keep(const RestRequest& request, const EndedExchange& exchange);
  void OpenBody(du::http::FailoverFileSink& sink);

  int status_ = -1;
  du::http::ErrorCode errorCode_ = du::http::ErrorCode::Done;
  std::FILE* file_ = nullptr;
  std::array<char, 0x10000> readBuffer_;
  std::vector<std::uint8_t> body_;
  std::string_view unread_;  ///< what is left of a body in memory
  std::unique_ptr<ScopedTempPath> tempFile_;
  std::string errorText_;
  std::optional<Failure> ifBroken_;  ///< what ReportBroken says; none while nobody collects
};

/// Parses the body of a success into a document. The caller has tested the status.
/// @return false, with its reason reported, without a body, for a body that is no JSON, and for one that is
///         nested too deeply
[[nodiscard]] bool ParseJsonResponse(RestStream& response, rapidjson::Document& document);

/// ParseJsonResponse for an answer that is to be an array. JSON of another kind is reported and gives false
/// too.
[[nodiscard]] bool ParseArrayResponse(RestStream& response, rapidjson::Document& document);

}  // namespace lxservices::cms_interface::vantry
