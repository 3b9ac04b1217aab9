#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/http.h"
#include "platform_default/answer_decoder.h"
#include "platform_default/answer_framing.h"
#include "platform_default/answer_notes.h"
#include "platform_default/folded_start.h"
#include "platform_default/refusal_sink.h"
#include "platform_default/tls_events.h"
#include "platform_default/transfer_clock.h"

namespace vtdirect::platform {

/// What an exchange is made of. Borrowed for as long as it runs.
struct ExchangeParts {
  du::http::FileSource* body = nullptr;  ///< null for a request without one; at its first byte
  du::http::FileSink* sink = nullptr;
  /// Whether the request may go out once more when a kept connection dies under it. What writes may not: the
  /// server may have acted on it, and a document must not be created twice.
  bool mayRepeat = false;
  /// Whether a compressed answer is decoded on the way to the sink.
  bool decodes = false;
  /// Whether a coded success is refused: it was asked for as it is, and its bytes are not the content.
  bool refusesCoded = false;
  /// Answers with a demand for authentication after which curl may send the request once more by itself. A
  /// server can call each login stale and ask for the next one.
  int demands = 1;
  /// Where the events of a connection over TLS are noted; null for any other connection.
  const TlsEvents* tls = nullptr;
};

/// What one exchange on a curl handle needs while it runs, and what it learned when it is over: the functions
/// that curl calls back, and their state.
///
/// An object serves one exchange after the other on the same handle. Nothing that the caller's sources and
/// sinks throw may cross curl's frames, so it is kept here and goes on after the exchange.
class CurlExchange {
 public:
  /// Registers the callbacks on the handle, for good. The object must outlive the handle.
  void Attach(CURL* handle);

  /// Prepares the next exchange.
  /// @param limits  end an exchange that waits too long once it is connected
  void Start(const ExchangeParts& parts, const TimeLimits& limits);

  /// Shows the listener what goes over the wire from the next exchange on, until null is given.
  void ShowWireTo(WireListener* listener) { foldedStart_.ShowTo(listener); }

  /// Performs the exchange that was prepared. Throws what a source or a sink has thrown.
  /// @param httpStatus  receives the status when the result is `Done`, and 413 with `TooLarge`
  [[nodiscard]] du::http::ErrorCode Perform(int* httpStatus);

  /// True when the last exchange was ended by the limit on the time to connect.
  [[nodiscard]] bool ConnectLimitRanOut() const { return connectLimitRanOut_; }

  /// What curl said at the end of the last exchange.
  [[nodiscard]] CURLcode Result() const { return result_; }
  /// True when the last request could go out once more, see ExchangeParts.
  [[nodiscard]] bool MayRepeat() const { return mayRepeat_; }
  /// True when the last exchange got the first line of an answer, an interim one included.
  [[nodiscard]] bool HasAnswer() const { return status_ != 0; }

  /// Demands for authentication that the last exchange was answered with, those that curl met by itself
  /// included.
  [[nodiscard]] int Demands() const { return demands_; }
  /// True when the last answer was ended because it had more to say than is read of a refusal, or because it
  /// was one demand too many. curl takes that for a failure and looks at none of its lines.
  [[nodiscard]] bool WasCut() const { return cut_; }

  // What the last exchange has shown, for the sentence that explains it.

  /// Bytes of header lines that set cookies.
  [[nodiscard]] std::size_t CookieBytes() const { return cookieBytes_; }
  /// The status of the last line that had one; 0 without any.
  [[nodiscard]] int Status() const { return status_; }
  [[nodiscard]] const AnswerNotes& Notes() const { return notes_; }
  /// True when a connection that it made was there, if only for the handshake, and ended with it. curl tells
  /// the time of a connection that is ready for a request, and of no other.
  [[nodiscard]] bool HadConnection() const { return hadConnection_; }
  /// True when its answer was refused for its lines: for its length or transfer coding, and for a coded content.
  [[nodiscard]] bool WasUnclear() const { return unclear_; }
  [[nodiscard]] bool WasCoded() const { return codedContent_; }
  /// True when it waited too long once it was connected, and for what it waited.
  [[nodiscard]] bool WaitLimitRanOut() const { return waitLimitRanOut_; }
  [[nodiscard]] TransferClock::Wait LastWait() const { return clock_.CurrentWait(); }

  /// True when curl has a nonce for a login by Digest. It keeps one for as long as the handle lives.
  [[nodiscard]] bool HasNonce() const { return hasNonce_; }

  /// How often a kept connection has died under a request of this handle, which curl then sent over a new
  /// one.
  [[nodiscard]] int Revivals() const { return revivals_; }

  /// The length of the body that `Start` was given, if it is known.
  [[nodiscard]] std::optional<std::uint64_t> BodySize() const { return bodySize_; }

 private:
  static std::size_t OnHeader(char* data, std::size_t, std::size_t count, void* self);
  static std::size_t OnBody(char* data, std::size_t, std::size_t count, void* self);
  static std::size_t OnRead(char* buffer, std::size_t size, std::size_t count, void* self);
  static int OnSeek(void* self, curl_off_t offset, int origin);
  static int OnProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent);
  static int OnRequestStarts(void* self, char*, char*, int, int);
  static int OnNewSocket(void* self, curl_socket_t socket, curlsocktype purpose);
  static int OnCloseSocket(void* self, curl_socket_t socket);

  /// False when the answer ends here.
  [[nodiscard]] bool TakeHeaderLine(char* data, std::size_t count);
  [[nodiscard]] bool ReadHeaderLine(std::string_view line);
  void BeginAnswer(int status);
  [[nodiscard]] bool EndHeader();
  void TakeBody(const std::uint8_t* data, std::size_t count);
  [[nodiscard]] bool IsBodyOfAnAnswer(std::string_view bytes);
  [[nodiscard]] bool BeginSink();
  [[nodiscard]] du::http::ErrorCode FinishSink();
  [[nodiscard]] du::http::FileSink& AnswerSink();
  [[nodiscard]] std::size_t ReadBody(std::uint8_t* buffer, std::size_t capacity);
  /// Of the lines in front of the body, with those to a proxy.
  [[nodiscard]] long RequestBytesSent() const;
  [[nodiscard]] bool ProxyRefusedTunnel() const;
  [[nodiscard]] bool BodyIsOut(curl_off_t sent) const;
  [[nodiscard]] bool WasCutOff() const;
  [[nodiscard]] bool IsDrowned(curl_off_t received) const;
  [[nodiscard]] du::http::ErrorCode Conclude(CURLcode result);

  /// The handle lives on and may close its socket at any later time: nothing of the caller's stays behind the
  /// exchange.
  struct BorrowedEnd {
    CurlExchange& exchange;
    ~BorrowedEnd() {
      exchange.refusal_.reset();
      exchange.body_ = nullptr;
      exchange.sink_ = nullptr;
    }
  };

  CURL* handle_ = nullptr;
  du::http::FileSource* body_ = nullptr;
  du::http::FileSink* sink_ = nullptr;
  std::optional<std::uint64_t> bodySize_;
  std::uint64_t bodySent_ = 0;

  int status_ = 0;            ///< of the last status line, 1xx included
  bool headerEnded_ = false;  ///< the empty line after the last status line came
  bool mayRepeat_ = false;
  bool decodes_ = false;
  bool refusesCoded_ = false;
  const TlsEvents* tls_ = nullptr;
  int mostDemands_ = 1;
  int demands_ = 0;
  bool cut_ = false;
  bool unclear_ = false;
  bool codedContent_ = false;
  AnswerFraming framing_;                   ///< of the last answer
  std::optional<RefusalSink> refusal_;      ///< before the sink of an answer that is no success
  std::unique_ptr<AnswerDecoder> decoder_;  ///< null for an answer that goes to the sink as it comes
  std::optional<long> sentBeforeStart_;     ///< set once a request of this exchange has started
  bool demandSeen_ = false;  ///< the last answer was a 401 or 407; only then may a body go out once more
  bool connectLimitRanOut_ = false;
  bool waitLimitRanOut_ = false;
  bool hadConnection_ = false;
  AnswerNotes notes_;
  CURLcode result_ = CURLE_OK;
  int revivals_ = 0;
  bool hasNonce_ = false;
  std::size_t headerBytes_ = 0;
  std::size_t cookieBytes_ = 0;
  bool begun_ = false;  ///< the sink has been begun

  du::http::ErrorCode failure_ =
      du::http::ErrorCode::Done;  ///< what a source or a sink ended the exchange with
  std::exception_ptr thrown_;

  FoldedStart foldedStart_;
  TransferClock clock_;
};

}  // namespace vtdirect::platform
