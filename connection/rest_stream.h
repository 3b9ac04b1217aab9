#pragma once

#include <rapidjson/document.h>
#include <rapidjson/filereadstream.h>
#include <rapidjson/memorystream.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
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
/// with this object. It is read by its file stream or its memory stream, of which at most one is set, from
/// its first byte to its last, and after Rewind once more. Used by one thread at a time. The read buffer
/// lives inside, so the object is neither copied nor moved: build it on the stack, or shared when reading
/// goes on after the function that sent the request.
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
  /// Null unless the body of a success is on the disk.
  [[nodiscard]] rapidjson::FileReadStream* fileStream() const { return fileStream_.get(); }
  /// Null unless the body of a success is in memory.
  [[nodiscard]] rapidjson::MemoryStream* memoryStream() const { return memoryStream_.get(); }
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
  std::unique_ptr<rapidjson::FileReadStream> fileStream_;
  std::unique_ptr<rapidjson::MemoryStream> memoryStream_;
  std::vector<std::uint8_t> body_;
  std::unique_ptr<ScopedTempPath> tempFile_;
  std::string errorText_;
  std::optional<Failure> ifBroken_;  ///< what ReportBroken says; none while nobody collects
};

/// Parses the body of a success into a document. The caller has tested the status.
/// @return false, with its reason reported, without a body, for a body that is no JSON, and for one nested
/// too deeply
[[nodiscard]] bool ParseJsonResponse(RestStream& response, rapidjson::Document& document);

/// ParseJsonResponse for an answer that is to be an array. JSON of another kind is reported and gives false
/// too.
[[nodiscard]] bool ParseArrayResponse(RestStream& response, rapidjson::Document& document);

}  // namespace lxservices::cms_interface::vantry
