#pragma once

#include <zlib.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/http.h"

namespace vtdirect::platform {

/// Unpacks one answer that came compressed, on its way to a sink. It knows whether the whole of it came.
class AnswerDecoder {
 public:
  /// @param encoding  the value of a "Content-Encoding" line
  /// @return null for what isn't gzip or deflate: such an answer is taken as it is
  [[nodiscard]] static std::unique_ptr<AnswerDecoder> For(std::string_view encoding);

  ~AnswerDecoder();
  AnswerDecoder(const AnswerDecoder&) = delete;
  AnswerDecoder& operator=(const AnswerDecoder&) = delete;

  /// Writes what the next bytes unpack to into the sink, in pieces of at most 64 KiB.
  /// @return `ProtocolFailure` when they are broken, or what the sink says
  [[nodiscard]] du::http::ErrorCode Decode(const std::uint8_t* data, std::size_t count,
                                           du::http::FileSink& sink);

  /// True when everything came that the packed form announces. An answer without a body is whole, too.
  [[nodiscard]] bool IsComplete() const { return atEnd_ || (!started_ && start_.empty()); }

 private:
  explicit AnswerDecoder(bool mayBeBare) : mayBeBare_(mayBeBare) {}
  [[nodiscard]] bool Start();
  [[nodiscard]] du::http::ErrorCode Inflate(const std::uint8_t* data, std::size_t count,
                                            du::http::FileSink& sink);

  const bool mayBeBare_;
  std::string start_;  ///< the first bytes, until they tell the form
  bool started_ = false;
  bool atEnd_ = false;
  z_stream stream_{};
};

}  // namespace vtdirect::platform
