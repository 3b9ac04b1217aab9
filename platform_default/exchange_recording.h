#pragma once

#include <curl/curl.h>

#include <chrono>
#include <memory>
#include <string_view>

#include "platform/http_observer.h"
#include "platform_default/curl_exchange.h"
#include "platform_default/folded_start.h"

namespace vtdirect::platform {

/// Who observes exchanges, and how much of a body they want.
struct ObserverInForce {
  du::http::ExchangeObserver report;
  std::size_t bodyBytes = 0;
};

/// Null while nobody observes.
[[nodiscard]] std::shared_ptr<const ObserverInForce> FindObserver();

/// Records one exchange of a handle while it lives: what goes over the wire, and the bodies that pass through the
/// source and the sink, which the exchange uses in the place of the caller's.
class ExchangeRecording final : public WireListener {
 public:
  /// @param exchange  of the handle
  /// @param body      null for a request without one
  ExchangeRecording(CURL* handle, CurlExchange& exchange, du::http::FileSource* body,
                    du::http::FileSink& sink, std::size_t bodyBytes);
  ~ExchangeRecording() override;

  [[nodiscard]] du::http::FileSource* body();
  [[nodiscard]] du::http::FileSink& sink();

  /// What was recorded, when the exchange is over. The caller adds what was asked for.
  [[nodiscard]] du::http::ObservedExchange End(du::http::ErrorCode result, int status);

 private:
  class RecordingSource;
  class RecordingSink;

  void WireShows(curl_infotype type, std::string_view bytes) override;
  void RequestHead(std::string_view text);
  void AnswerLine(std::string_view line);

  CURL* handle_;
  CurlExchange& onHandle_;
  du::http::ObservedExchange exchange_;
  std::unique_ptr<RecordingSource> source_;
  std::unique_ptr<RecordingSink> sink_;
};

}  // namespace vtdirect::platform
